# The engines: compiled once, linked into libvaskel.so and, with the hidden
# symbols in reach, into the tests and benchmarks of their internals.

set(VASKEL_FAMILIES messages units geometry raster colour fonts encoding util)
set(vaskel_sources)
foreach(family IN LISTS VASKEL_FAMILIES)
    file(GLOB family_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${family}/*.cpp)
    list(APPEND vaskel_sources ${family_sources})
endforeach()

add_library(vaskel_engines OBJECT ${vaskel_sources})
target_link_libraries(vaskel_engines PUBLIC Boost::headers PRIVATE $<BUILD_INTERFACE:vaskel_flags>)
target_include_directories(vaskel_engines PUBLIC ${PROJECT_SOURCE_DIR}/include
                                                 ${PROJECT_SOURCE_DIR})
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(vaskel_engines PRIVATE -fno-semantic-interposition)
endif()
# Functions that only the tests reach, such as a plain form beside a faster one,
# do not go into the shared library.
target_compile_options(vaskel_engines PRIVATE -ffunction-sections -fdata-sections)
# Of Boost, only signals throw, and no one asks where.
target_compile_definitions(vaskel_engines PRIVATE BOOST_EXCEPTION_DISABLE)

# Three kinds of code, told apart by counted instructions and timings: wide forms
# and loops over points, pixels, letters and digits gain by -O3, which no one
# would notice elsewhere, but which makes code a quarter larger; and code that no
# one waits for is compiled for size: where it is signals and callbacks of Boost,
# that halves it. Loops of a few turns are not written out where that takes more
# than 60 instructions (GCC's own limit is 200): only wide forms and number fields gain
# by more, and wide forms for short texts and for outlines, which are encoded while keys
# are waited for, by none of it. Nothing is aligned but the beginnings of loops and, by
# attribute, a few functions that are shorter than what is lost otherwise, and what
# rarely runs stays in its function, since each part of a function is described once more
# for exceptions.
set(vaskel_medium -O2)
set(vaskel_fast -O3)
set(vaskel_small -Os)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    list(APPEND vaskel_medium -fno-align-functions -fno-align-jumps
                              -fno-reorder-blocks-and-partition)
    list(APPEND vaskel_fast --param=max-completely-peeled-insns=60)
    # Small code, too, copies by memcpy, not by the one instruction that does.
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        list(APPEND vaskel_small -mstringop-strategy=libcall)
    endif()
endif()
target_compile_options(vaskel_engines PRIVATE "$<$<CONFIG:Release>:${vaskel_medium}>")
set(vaskel_loops
    units/distostr.cpp units/doutostr.cpp
    geometry/clean_samples.cpp geometry/edge_run.cpp
    geometry/inside_path.cpp geometry/intersect_active.cpp geometry/intersect_simple.cpp
    raster/downsample_cells.cpp
    colour/ink_run.cpp
    encoding/ascii85.cpp encoding/bigint.cpp encoding/bigint_limbs.cpp encoding/path_to_url.cpp
    encoding/unicode_onepass.cpp encoding/unicode_ways.cpp
    util/random.cpp)
set(vaskel_written_out units/strtodou.cpp)
set(vaskel_wide)
foreach(source IN LISTS vaskel_sources)
    if(source MATCHES "_(avx2|avx512|x86)" AND NOT source MATCHES "_short|outline_")
        file(RELATIVE_PATH source ${PROJECT_SOURCE_DIR} ${source})
        list(APPEND vaskel_wide ${source})
    endif()
endforeach()
set(vaskel_unhurried
    messages/error.cpp messages/message.cpp messages/message_ask.cpp messages/message_blocks.cpp
    messages/message_handler.cpp messages/uni16_text.cpp
    units/unit_state.cpp units/parse_range.cpp units/strtodis.cpp
    geometry/arc.cpp geometry/clean_cones.cpp geometry/clean_plain.cpp geometry/intersect.cpp
    geometry/intersect_order.cpp
    geometry/intersect_plain.cpp geometry/intersect_sweep.cpp geometry/selint.cpp
    geometry/sweep_sort.cpp
    raster/downsample_estimate.cpp raster/downsampler.cpp raster/lines_ahead.cpp
    raster/replicate.cpp raster/upsampler.cpp
    colour/cmyk_rgb.cpp colour/hsb.cpp colour/hsl.cpp colour/link_chain.cpp
    fonts/charstring.cpp fonts/outline.cpp fonts/standard_names.cpp fonts/text_out.cpp
    fonts/type1_font.cpp fonts/type1_private.cpp
    encoding/unicode.cpp encoding/unicode_plain.cpp encoding/unicode_tables.cpp
    util/cpu.cpp util/popup_data_model.cpp)
function(vaskel_optimise level)
    foreach(source IN LISTS ARGN)
        if(NOT EXISTS ${PROJECT_SOURCE_DIR}/${source})
            message(FATAL_ERROR "cmake/Engines.cmake lists ${source}, which is not there")
        endif()
        set_source_files_properties(${PROJECT_SOURCE_DIR}/${source} PROPERTIES
                                    COMPILE_OPTIONS "$<$<CONFIG:Release>:${level}>")
    endforeach()
endfunction()
vaskel_optimise(-O3 ${vaskel_wide} ${vaskel_written_out})
vaskel_optimise("${vaskel_fast}" ${vaskel_loops})
vaskel_optimise("${vaskel_small}" ${vaskel_unhurried})

# Texts that are made right in a string's memory, without zeros first, need a
# member that C++23 brought; without it they are made by way of zeros.
if("cxx_std_23" IN_LIST CMAKE_CXX_COMPILE_FEATURES)
    set_property(SOURCE ${PROJECT_SOURCE_DIR}/encoding/unicode_avx512_short.cpp
                        ${PROJECT_SOURCE_DIR}/encoding/unicode_onepass.cpp
                 APPEND PROPERTY COMPILE_OPTIONS "${CMAKE_CXX23_STANDARD_COMPILE_OPTION}")
endif()

# libvaskel.so leaves the host's calls undefined and names no library that
# holds them: whoever links a program chooses the host.
add_library(vaskel SHARED $<TARGET_OBJECTS:vaskel_engines>)
add_library(Vaskel::vaskel ALIAS vaskel)
target_link_libraries(vaskel PRIVATE $<BUILD_INTERFACE:vaskel_flags> PUBLIC Boost::headers)
target_include_directories(vaskel PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                         $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                         $<INSTALL_INTERFACE:${VASKEL_INSTALL_INCLUDEDIR}>)
target_compile_features(vaskel PUBLIC cxx_std_20)
set_target_properties(vaskel PROPERTIES VERSION ${PROJECT_VERSION}
                                        SOVERSION ${PROJECT_VERSION_MAJOR}
                                        LINKER_LANGUAGE CXX
                                        LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/vaskel.map)
# A relative relocation, of which there are 500, takes 24 bytes and packed a bit,
# which the C library reads from 2.36 on. A library built there asks for it.
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs VASKEL_LINKER_PACKS)
check_cxx_source_compiles("#include <cstdlib>
                           #if !__GLIBC_PREREQ(2, 36)
                           #error
                           #endif
                           int main() {}" VASKEL_LIBC_UNPACKS)
if(VASKEL_LINKER_PACKS AND VASKEL_LIBC_UNPACKS)
    target_link_options(vaskel PRIVATE -Wl,-z,pack-relative-relocs)
endif()
# Code and constants stand in one segment: two pages less, and two mappings.
check_linker_flag(CXX -Wl,-z,noseparate-code VASKEL_LINKER_JOINS)
if(VASKEL_LINKER_JOINS)
    target_link_options(vaskel PRIVATE -Wl,-z,noseparate-code)
endif()
# Calls from one engine to another do not go through the linkage table.
target_link_options(vaskel PRIVATE -Wl,--gc-sections -Wl,-Bsymbolic-functions
                    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/vaskel.map)
