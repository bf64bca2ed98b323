include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS velDiagEdit EXPORT VelDiagEditTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velDiagEdit)
install(FILES ${VDE_BUILD_INCLUDE}/velDiagEdit/velDiagEdit_export.h
    ${PROJECT_SOURCE_DIR}/package/velDiagEdit.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velDiagEdit)
install(EXPORT VelDiagEditTargets
    NAMESPACE VelDiagEdit::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VelDiagEdit)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VelDiagEditConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VelDiagEditConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VelDiagEdit)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelDiagEditConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelDiagEditConfig.cmake
    ${PROJECT_BINARY_DIR}/VelDiagEditConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VelDiagEdit)
