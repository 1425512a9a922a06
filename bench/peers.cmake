# The peers: Debian packages that do the same work as one of our engines. Each
# becomes a target peer_<name> that carries VASKEL_BENCH_<NAME>=1, or an empty
# target where the package is not installed: programs link what they want, and
# sources ask the macro. Which ones are there is left in peers.txt for the
# report, one line a peer: name, package, and "found" or "missing".

set(bench_peers)
find_package(PkgConfig REQUIRED)

# bench_peer(NAME PACKAGE
#            [HEADER header [SUFFIX folder]] [LIBRARIES name...]
#            [PKGCONFIG module] [TARGET target])
# All that is named must be there: the header and the libraries, the pkg-config
# module, or the target of a CMake package that was looked for before.
function(bench_peer name package)
    cmake_parse_arguments(arg "" "HEADER;SUFFIX;PKGCONFIG;TARGET" "LIBRARIES" ${ARGN})
    add_library(peer_${name} INTERFACE)
    set(found TRUE)
    set(libraries)
    if(arg_HEADER)
        find_path(peer_${name}_INCLUDE ${arg_HEADER} PATH_SUFFIXES ${arg_SUFFIX})
        if(peer_${name}_INCLUDE)
            target_include_directories(peer_${name} SYSTEM INTERFACE ${peer_${name}_INCLUDE})
        else()
            set(found FALSE)
        endif()
    endif()
    foreach(library IN LISTS arg_LIBRARIES)
        find_library(peer_${name}_${library} ${library})
        if(NOT peer_${name}_${library})
            set(found FALSE)
        endif()
        list(APPEND libraries ${peer_${name}_${library}})
    endforeach()
    if(arg_PKGCONFIG)
        pkg_check_modules(peer_${name}_pc QUIET IMPORTED_TARGET ${arg_PKGCONFIG})
        set(libraries PkgConfig::peer_${name}_pc)
        if(NOT peer_${name}_pc_FOUND)
            set(found FALSE)
        endif()
    endif()
    if(arg_TARGET)
        set(libraries ${arg_TARGET})
        if(NOT TARGET ${arg_TARGET})
            set(found FALSE)
        endif()
    endif()
    set(state found)
    if(found)
        string(TOUPPER ${name} upper)
        target_compile_definitions(peer_${name} INTERFACE VASKEL_BENCH_${upper}=1)
        target_link_libraries(peer_${name} INTERFACE ${libraries})
    else()
        set(state missing)
        set_target_properties(peer_${name} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ""
                                                      INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "")
        message(STATUS "${name} (${package}) is not installed: left out of the benchmarks")
    endif()
    set(bench_peers "${bench_peers}${name} ${package} ${state}\n" PARENT_SCOPE)
endfunction()

# Geometry
bench_peer(boost libboost-dev HEADER boost/geometry.hpp)
bench_peer(geos libgeos++-dev HEADER geos/geom/GeometryFactory.h LIBRARIES geos)
target_compile_definitions(peer_geos INTERFACE USE_UNSTABLE_GEOS_CPP_API)
find_package(CGAL QUIET)
bench_peer(cgal libcgal-dev TARGET CGAL::CGAL)

# Bitmaps and images. Debian's OpenCV comes in parts; its CMake package is not
# in those that are needed here.
bench_peer(opencv libopencv-imgproc-dev HEADER opencv2/imgproc.hpp SUFFIX opencv4
           LIBRARIES opencv_core opencv_imgproc)
bench_peer(potrace libpotrace-dev HEADER potracelib.h LIBRARIES potrace)
bench_peer(vips libvips-dev PKGCONFIG vips)
bench_peer(swscale libswscale-dev PKGCONFIG libswscale)
bench_peer(zimg libzimg-dev PKGCONFIG zimg)
bench_peer(stb libstb-dev HEADER stb_image_resize.h SUFFIX stb LIBRARIES stb)

# Colour; the embedded platform needs it anyway.
bench_peer(lcms2 liblcms2-dev PKGCONFIG lcms2)

# Streams and texts
bench_peer(magick libgraphicsmagick1-dev PKGCONFIG GraphicsMagick)
bench_peer(podofo libpodofo-dev PKGCONFIG libpodofo)
bench_peer(icu libicu-dev PKGCONFIG icu-uc)
find_package(utf8cpp QUIET)
bench_peer(utfcpp libutfcpp-dev TARGET utf8::cpp)
bench_peer(uriparser liburiparser-dev PKGCONFIG liburiparser)
bench_peer(glib libglib2.0-dev PKGCONFIG glib-2.0)
find_package(spdlog QUIET)
bench_peer(spdlog libspdlog-dev TARGET spdlog::spdlog)
find_package(fmt QUIET)
bench_peer(fmt libfmt-dev TARGET fmt::fmt)

# Numbers
bench_peer(double_conversion libdouble-conversion-dev
           HEADER double-conversion/double-conversion.h LIBRARIES double-conversion)
bench_peer(fast_float libfast-float-dev HEADER fast_float/fast_float.h)
bench_peer(udunits libudunits2-dev HEADER udunits2.h LIBRARIES udunits2)
bench_peer(muparser libmuparser-dev PKGCONFIG muparser)
bench_peer(qalculate libqalculate-dev PKGCONFIG libqalculate)
bench_peer(gmp libgmp-dev HEADER gmp.h LIBRARIES gmp)

# Programs
find_program(T1ASM t1asm)
set(t1asm_state missing)
if(T1ASM)
    set(t1asm_state found)
endif()
string(APPEND bench_peers "t1asm t1utils ${t1asm_state}\n")

file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/peers.txt "${bench_peers}")
