#include "samples/proof/versions.h"

#include <png.h>
#include <tiffio.h>

#include <qpdf/QPDF.hh>

#include "samples/proof/version.h"

namespace Proof {

std::string versionText() {
    std::string tiff = TIFFGetVersion();  // "LIBTIFF, Version 4.5.0" and more lines
    tiff = tiff.substr(0, tiff.find('\n'));
    tiff = tiff.substr(tiff.rfind(' ') + 1);
    return "vaskel-proof " VASKEL_VERSION " (libpng " + std::string(png_get_libpng_ver(nullptr)) +
           ", libtiff " + tiff + ", qpdf " + QPDF::QPDFVersion() + ")";
}

}  // namespace Proof
