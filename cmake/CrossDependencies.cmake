# SPDX-License-Identifier: MIT
# What a build for another system takes from this one: sources and headers, never binaries.

# kx_add_googletest(): builds GTest::gtest and GTest::gtest_main from the sources that Debian's package
# googletest installs.
function(kx_add_googletest)
    set(GOOGLETEST_SOURCE_DIR /usr/src/googletest CACHE PATH "The sources of GoogleTest")
    # The options of that project are ours to set, for this build only.
    set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
    set(BUILD_SHARED_LIBS OFF)
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory(${GOOGLETEST_SOURCE_DIR} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
    foreach(library gtest gtest_main)
        # Its warnings are not ours.
        target_compile_options(${library} PRIVATE -w)
        if(NOT TARGET GTest::${library})
            add_library(GTest::${library} ALIAS ${library})
        endif()
    endforeach()
endfunction()

# kx_add_cli11(): CLI11::CLI11 from the headers that this system has. They stand among the headers of its C
# library, which are not to be seen, so the build tree gets a link of its own to them.
function(kx_add_cli11)
    find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(include_dir ${PROJECT_BINARY_DIR}/headers)
    file(MAKE_DIRECTORY ${include_dir})
    file(CREATE_LINK ${CLI11_INCLUDE_DIR}/CLI ${include_dir}/CLI SYMBOLIC)
    add_library(CLI11::CLI11 INTERFACE IMPORTED GLOBAL)
    target_include_directories(CLI11::CLI11 INTERFACE ${include_dir})
endfunction()
