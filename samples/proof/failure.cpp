#include "samples/proof/failure.h"

namespace Proof {

std::string oneLine(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 32 || c == 127) c = '?';
    return text;
}

Failure fileFailure(const std::string& file, const std::string& reason) {
    return Failure(oneLine((file == "-" ? "standard input" : file) + ": " + reason));
}

}  // namespace Proof
