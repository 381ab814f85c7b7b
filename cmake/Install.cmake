# Installation: headers in their folders under include/Zyn3dGradOp, the CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(DIRECTORY host foundation gradient rbf_cell rbf_face rbf_ib DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Zyn3dGradOp
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY reference_host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Zyn3dGradOp FILES_MATCHING PATTERN "*.h")

install(TARGETS Zyn3dGradOp Zyn3dGradOp_host Zyn3dGradOp_search_tree EXPORT Zyn3dGradOpTargets)
install(TARGETS Zyn3dGradOp_reference_host EXPORT Zyn3dGradOpTargets)
if(TARGET zyngrad)
  # The tool finds the libraries beside it, wherever the prefix is moved to.
  set_target_properties(zyngrad PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
  install(TARGETS zyngrad)
endif()
install(EXPORT Zyn3dGradOpTargets NAMESPACE Zyn3dGradOp:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)

configure_package_config_file(cmake/Zyn3dGradOpConfig.cmake.in Zyn3dGradOpConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)
write_basic_package_version_file(Zyn3dGradOpConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/Zyn3dGradOpConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/Zyn3dGradOpConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)

configure_file(cmake/Zyn3dGradOp.pc.in Zyn3dGradOp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/Zyn3dGradOp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
