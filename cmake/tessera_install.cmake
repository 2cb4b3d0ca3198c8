# Installation as a package: the module, the host-facing and core headers, and Tessera::core.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(tessera_static PROPERTIES OUTPUT_NAME tessera_core EXPORT_NAME core)

install(TARGETS tessera_zb
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tessera
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS tessera_static EXPORT TesseraTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# The contracts and the core library; the PNG codec is the reference host's, not the library's.
foreach(dir interface core)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/${dir}/ DESTINATION include/tessera/${dir}
            FILES_MATCHING PATTERN "*.h" PATTERN "png_codec.h" EXCLUDE)
endforeach()

install(EXPORT TesseraTargets NAMESPACE Tessera::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)
if(WIN32)
    set(TESSERA_MODULE_INSTALL_PATH ${CMAKE_INSTALL_BINDIR}/tessera_zb.dll)
else()
    set(TESSERA_MODULE_INSTALL_PATH ${CMAKE_INSTALL_LIBDIR}/tessera/tessera_zb.so)
endif()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TesseraConfig.cmake.in
    ${CMAKE_BINARY_DIR}/TesseraConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera
    PATH_VARS TESSERA_MODULE_INSTALL_PATH)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TesseraConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TesseraConfig.cmake ${CMAKE_BINARY_DIR}/TesseraConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)
