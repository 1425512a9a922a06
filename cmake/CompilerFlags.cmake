# vaskel_flags: how every target of the tree is compiled.
#
# Results are stored in documents, so they may not depend on flags: no fused
# multiply-add unless written, no fast-math, no wide instructions by default.

add_library(vaskel_flags INTERFACE)
target_compile_features(vaskel_flags INTERFACE cxx_std_20)
target_compile_options(vaskel_flags INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow
                                              -Wconversion -Wno-sign-conversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in "text" + std::string, where none are.
    target_compile_options(vaskel_flags INTERFACE -Wno-restrict)
endif()
if(VASKEL_WERROR)
    target_compile_options(vaskel_flags INTERFACE -Werror)
endif()
if(VASKEL_SANITIZE)
    target_compile_options(vaskel_flags INTERFACE -fsanitize=${VASKEL_SANITIZE}
                           -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vaskel_flags INTERFACE -fsanitize=${VASKEL_SANITIZE})
endif()
if(VASKEL_FUZZ)  # fuzzers look for new ways through all of the tree's code
    target_compile_options(vaskel_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
