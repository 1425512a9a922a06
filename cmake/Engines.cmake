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

# Code that no one waits for is compiled for size: where it is signals and
# callbacks of Boost, that halves it.
set(vaskel_unhurried
    messages/error.cpp messages/message_ask.cpp messages/message_blocks.cpp
    messages/message_handler.cpp units/unit_state.cpp units/parse_range.cpp
    fonts/standard_names.cpp encoding/unicode_plain.cpp
    util/popup_data_model.cpp)
foreach(source IN LISTS vaskel_unhurried)
    set_source_files_properties(${PROJECT_SOURCE_DIR}/${source} PROPERTIES
                                COMPILE_OPTIONS "$<$<CONFIG:Release>:-Os>")
endforeach()

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
target_link_options(vaskel PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/vaskel.map)
