# The Debian packages a native build uses, looked for once before anything else, so that
# configuring names every missing one in a single line with the apt-get command that adds them.
# A part whose packages are missing is left out; only the module's own needs stop the configure.
# Nothing is installed from here, not even as root: configuring should neither change the
# machine nor need the network, and .ci/run installs what CI needs.
#
# Sets TESSERA_HAVE_GTEST and TESSERA_HAVE_BENCHMARK for the folders that need them.

set(TESSERA_MISSING_PACKAGES)
set(TESSERA_MISSING_PARTS)
set(TESSERA_MISSING_REQUIRED FALSE)

# _tessera_want(<found> "<what goes without>" REQUIRED|OPTIONAL <package>...)
macro(_tessera_want found what need)
    if(NOT ${found})
        list(APPEND TESSERA_MISSING_PACKAGES ${ARGN})
        list(APPEND TESSERA_MISSING_PARTS "${what}")
        if("${need}" STREQUAL "REQUIRED")
            set(TESSERA_MISSING_REQUIRED TRUE)
        endif()
    endif()
endmacro()

# The cross build compiles GoogleTest from the sources of Debian's googletest package.
find_file(TESSERA_GTEST_SOURCES CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH
          NO_CMAKE_FIND_ROOT_PATH)
set(TESSERA_HAVE_BENCHMARK FALSE)

if(CMAKE_CROSSCOMPILING)
    set(TESSERA_HAVE_GTEST ${TESSERA_GTEST_SOURCES})
    if(TESSERA_TESTS)
        _tessera_want(TESSERA_HAVE_GTEST "the tests" OPTIONAL googletest)
    endif()
else()
    find_package(Freetype QUIET)
    find_package(Fontconfig QUIET)
    set(_tessera_fonts FALSE)
    if(Freetype_FOUND AND Fontconfig_FOUND)
        set(_tessera_fonts TRUE)
    endif()
    _tessera_want(_tessera_fonts "the module" REQUIRED libfreetype-dev libfontconfig-dev)

    # The reference host: PNG files, and the header-only model and picture libraries.
    find_package(PNG QUIET)
    _tessera_want(PNG_FOUND "tessera-render and the demo" OPTIONAL libpng-dev)
    find_path(TESSERA_HAVE_TINYOBJ tiny_obj_loader.h)
    find_path(TESSERA_HAVE_TINYGLTF tiny_gltf.h)
    find_path(TESSERA_HAVE_STB_IMAGE stb_image.h PATH_SUFFIXES stb)
    find_path(TESSERA_HAVE_JSON nlohmann/json.hpp)
    set(_tessera_models FALSE)
    if(TESSERA_HAVE_TINYOBJ AND TESSERA_HAVE_TINYGLTF AND TESSERA_HAVE_STB_IMAGE
       AND TESSERA_HAVE_JSON)
        set(_tessera_models TRUE)
    endif()
    _tessera_want(_tessera_models "tessera-render and the demo" OPTIONAL
                  libtinyobjloader-dev libtinygltf-dev libstb-dev nlohmann-json3-dev)
    find_package(assimp CONFIG QUIET)
    _tessera_want(assimp_FOUND "model formats besides OBJ and glTF" OPTIONAL libassimp-dev)
    find_package(SDL2 CONFIG QUIET)
    _tessera_want(SDL2_FOUND "tessera-view" OPTIONAL libsdl2-dev)

    if(TESSERA_TESTS)
        find_package(GTest QUIET)
        set(TESSERA_HAVE_GTEST FALSE)
        if(GTest_FOUND OR TESSERA_GTEST_SOURCES)
            set(TESSERA_HAVE_GTEST TRUE)
        endif()
        _tessera_want(TESSERA_HAVE_GTEST "the tests" OPTIONAL
                      googletest libgtest-dev libgmock-dev)
    endif()
    if((NOT DEFINED TESSERA_BENCH OR TESSERA_BENCH) AND NOT TESSERA_SANITIZE)
        find_package(benchmark QUIET)
        set(TESSERA_HAVE_BENCHMARK ${benchmark_FOUND})
        _tessera_want(benchmark_FOUND "the benchmarks" OPTIONAL libbenchmark-dev)
        find_path(TESSERA_HAVE_OSMESA GL/osmesa.h)
        find_package(glm CONFIG QUIET)
        set(_tessera_peers FALSE)
        if(TESSERA_HAVE_OSMESA AND glm_FOUND)
            set(_tessera_peers TRUE)
        endif()
        _tessera_want(_tessera_peers "the benchmarks' peers" OPTIONAL libosmesa6-dev libglm-dev)
    endif()
endif()

if(TESSERA_MISSING_PACKAGES)
    list(REMOVE_DUPLICATES TESSERA_MISSING_PACKAGES)
    list(REMOVE_DUPLICATES TESSERA_MISSING_PARTS)
    list(JOIN TESSERA_MISSING_PACKAGES " " _tessera_packages)
    list(JOIN TESSERA_MISSING_PARTS ", " _tessera_parts)
    string(CONCAT _tessera_line "Tessera: missing packages leave out ${_tessera_parts}; "
                  "add them with: apt-get install ${_tessera_packages}")
    message(NOTICE "${_tessera_line}")
    if(TESSERA_MISSING_REQUIRED)
        message(FATAL_ERROR "The module cannot be built without the packages above.")
    endif()
endif()
