# Installation: headers in their folders under include/Zyn3dGradOp, the CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(DIRECTORY host foundation gradient rbf_cell rbf_face rbf_ib DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Zyn3dGradOp
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY reference_host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Zyn3dGradOp FILES_MATCHING PATTERN "*.h")

install(TARGETS Zyn3dGradOp Zyn3dGradOp_host Zyn3dGradOp_search_tree EXPORT Zyn3dGradOpTargets)
# A set of its own: it is left out where what it depends on is not there.
install(TARGETS Zyn3dGradOp_reference_host EXPORT Zyn3dGradOpReferenceHostTargets)
if(TARGET Zyn3dGradOp_host_check)
  install(DIRECTORY host_check DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Zyn3dGradOp FILES_MATCHING PATTERN "*.h")
  install(TARGETS Zyn3dGradOp_host_check EXPORT Zyn3dGradOpTargets)
endif()
if(TARGET zyngrad)
  # The tool finds the libraries beside it, wherever the prefix is moved to.
  set_target_properties(zyngrad PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
  install(TARGETS zyngrad)
endif()
foreach(export_set Zyn3dGradOpTargets Zyn3dGradOpReferenceHostTargets)
  install(EXPORT ${export_set} NAMESPACE Zyn3dGradOp:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)
endforeach()

# For the package's configuration: what the reference host was built with.
set(reference_host_has_mpi ${ZYN_BUILD_TOOL})
set(reference_host_has_cgns OFF)
if(CGNS_INCLUDE_DIR AND CGNS_LIBRARY)
  set(reference_host_has_cgns ON)
endif()

configure_package_config_file(cmake/Zyn3dGradOpConfig.cmake.in Zyn3dGradOpConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)
write_basic_package_version_file(Zyn3dGradOpConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/Zyn3dGradOpConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/Zyn3dGradOpConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)

# Relative to the file itself, so that it is right wherever the files are moved to.
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/Zyn3dGradOp.pc.in Zyn3dGradOp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/Zyn3dGradOp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

include(cmake/Package.cmake)
