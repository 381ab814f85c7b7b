# Installation: headers in their folders under include/Zyn3dGradOp, the CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

# `./dev demo` builds the program alone, and an installation of half of it would end in the middle: say so before the
# first file is copied.
set(installed_files $<TARGET_FILE:Zyn3dGradOp> $<TARGET_FILE:Zyn3dGradOp_search_tree>
  $<TARGET_FILE:Zyn3dGradOp_reference_host> $<TARGET_FILE:Zyn3dGradOp_host_check>)
foreach(target zyngrad zyn3dgradop_core zyn3dgradop_mpi)
  if(TARGET ${target})
    list(APPEND installed_files $<TARGET_FILE:${target}>)
  endif()
endforeach()
install(CODE "
set(installed_files \"${installed_files}\")
foreach(file IN LISTS installed_files)
  if(NOT EXISTS \"\${file}\")
    message(FATAL_ERROR \"Not everything is built yet. Build first: cmake --build ${CMAKE_BINARY_DIR}\")
  endif()
endforeach()")

# Public headers, and those that they include. Whatever else a folder has belongs to its sources alone.
set(public_headers
  host/ZYNCom.h
  host/ZYNCommunication.h
  host/ZYNKNCompParm.h
  host/ZYNOptKer.h
  host/Zyn3dGV.h
  foundation/CDenseSolver.h
  foundation/CZYNVector.h
  foundation/Cpp_DataStructure.h
  foundation/Export.h
  foundation/FaceGroups.h
  foundation/IBCnode.h
  foundation/Zyn3dGradOpVersion.h
  gradient/COperatorGradient.h
  gradient/COperatorGradientImpl.h  # the operator's state, which tests and benchmarks of a solver look at
  rbf_cell/CZynRBFInternalObject.h
  rbf_cell/RBFnode.h
  rbf_face/CZynFaceRBFInternalObject.h
  rbf_ib/CZynIBRBFInternalObject.h
  host_check/CheckHostData.h
  host_check/HostBreach.h
  host_check/HostCheckOptions.h
  host_check/HostCheckReport.h)
# Of the reference host what a program needs to have it read, cut and lend a mesh.
set(reference_host_headers
  reference_host/MeshReader.h
  reference_host/arrays/ArrayHost.h
  reference_host/arrays/ArrayMesh.h
  reference_host/box/BoxMesh.h
  reference_host/box/BoxSpec.h
  reference_host/mesh/BoundaryGroups.h
  reference_host/mesh/GroupRules.h
  reference_host/mesh/CellGeometry.h
  reference_host/mesh/DualMesh.h
  reference_host/mesh/FaceGeometry.h
  reference_host/mesh/FaceMesh.h
  reference_host/mesh/CellShapes.h
  reference_host/mesh/FaceMeshBuilder.h
  reference_host/mesh/MeshCheck.h
  reference_host/mesh/MeshError.h
  reference_host/mesh/MeshNames.h
  reference_host/mesh/MeshPart.h
  reference_host/mesh/Vector3.h
  reference_host/parallel/LoadField.h
  reference_host/parallel/LoadMesh.h
  reference_host/parallel/MeshDistribution.h
  reference_host/parallel/MeshLoading.h
  reference_host/parallel/MpiAgreement.h
  reference_host/parallel/MpiCommunicator.h
  reference_host/parallel/MpiExchange.h
  reference_host/parallel/MpiReduction.h
  reference_host/partition/BoundaryPlaces.h
  reference_host/partition/BoundaryVectors.h
  reference_host/partition/HostPartition.h
  reference_host/partition/InProcessExchange.h
  reference_host/partition/MeshQuality.h
  reference_host/partition/MeshSummary.h
  reference_host/partition/RaggedTable.h)
foreach(header IN LISTS public_headers reference_host_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Zyn3dGradOp/${folder})
endforeach()

install(TARGETS Zyn3dGradOp Zyn3dGradOp_host Zyn3dGradOp_search_tree Zyn3dGradOp_host_check EXPORT Zyn3dGradOpTargets)
# A set of its own: it is left out where what it depends on is not there.
install(TARGETS Zyn3dGradOp_reference_host EXPORT Zyn3dGradOpReferenceHostTargets)
if(TARGET zyngrad)
  # The tool finds the libraries beside it, wherever the prefix is moved to.
  set_target_properties(zyngrad PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
  install(TARGETS zyngrad)
endif()
foreach(export_set Zyn3dGradOpTargets Zyn3dGradOpReferenceHostTargets)
  install(EXPORT ${export_set} NAMESPACE Zyn3dGradOp:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Zyn3dGradOp)
endforeach()

# For the package's configuration: what the reference host was built with.
set(reference_host_has_mpi ${ZYN_PARALLEL_HOST})
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
