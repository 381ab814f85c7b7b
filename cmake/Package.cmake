# Manual page and shell completion of the tool, and the Debian packages: cmake --build BUILD --target package. There are
# two if the Python module is built, zyn3dgradop with everything else and python3-zyn3dgradop.
set(zyn_package_name zyn3dgradop)

# Both are made of what the built tool tells about itself, so they cannot fall behind it.
if(TARGET zyngrad AND NOT CMAKE_CROSSCOMPILING AND NOT ZYN_SANITIZE)
  # The help is printed by one process; as root, or without a network, Open MPI wants to be told that this is fine.
  set(run_alone ${CMAKE_COMMAND} -E env OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OMPI_MCA_plm=isolated)
  set(scripts ${PROJECT_SOURCE_DIR}/packaging/man_page.sh ${PROJECT_SOURCE_DIR}/packaging/bash_completion.sh)
  list(GET scripts 0 man_page_script)
  list(GET scripts 1 completion_script)
  add_custom_command(OUTPUT zyngrad.1.gz zyngrad.bash
    COMMAND ${run_alone} bash ${man_page_script} $<TARGET_FILE:zyngrad> ${PROJECT_VERSION} > zyngrad.1
    COMMAND gzip -9nf zyngrad.1
    COMMAND ${run_alone} bash ${completion_script} $<TARGET_FILE:zyngrad> > zyngrad.bash
    DEPENDS zyngrad ${scripts} COMMENT "Manual page and completion of zyngrad" VERBATIM)
  add_custom_target(zyngrad_pages ALL
    DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/zyngrad.1.gz ${CMAKE_CURRENT_BINARY_DIR}/zyngrad.bash)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zyngrad.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zyngrad.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zyngrad)
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${zyn_package_name})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
# Nobody reads mail at this domain, which is reserved for examples: whoever gives the package to others puts an address here.
set(CPACK_PACKAGE_CONTACT "The Zyn3dGradOp developers <zyn3dgradop@example.org>" CACHE STRING
  "Maintainer of the Debian package: Name <address>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

# Debian wants a changelog in its own form, compressed. The entry has the date of the configuration, or that of
# SOURCE_DATE_EPOCH, and gzip stores no time, so that packages can be built twice with the same bits.
#   zyn_debian_changelog(PACKAGE [options of install])
string(TIMESTAMP zyn_package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
find_program(GZIP_PROGRAM gzip)
function(zyn_debian_changelog package)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${package})
  configure_file(packaging/debian/changelog.in ${folder}/changelog @ONLY)
  if(GZIP_PROGRAM)
    execute_process(COMMAND ${GZIP_PROGRAM} -9nf ${folder}/changelog COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${folder}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} ${ARGN})
  endif()
endfunction()
zyn_debian_changelog(${zyn_package_name})
install(FILES packaging/debian/copyright CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${zyn_package_name})

set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "A C++17 shared library that a finite-volume solver links and drives:
Green-Gauss, least-squares and radial-basis gradients, interpolation to
faces and to points. With its headers, a reference host for tests and
tools, and zyngrad, which runs the library on a mesh and measures how good
each method is there.")
# What the programs and libraries are linked with; the package's own libraries have no package to be found in.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What belongs to no component makes the package with the project's name.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Unspecified)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME ${zyn_package_name})
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_RECOMMENDS openmpi-bin)
# For those who build with the reference host.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SUGGESTS "libopenmpi-dev, libmetis-dev, libptscotch-dev, libcgns-dev, zlib1g-dev")

if(TARGET zyn3dgradop_python)
  # The module has the version of Python that it was built for in its name.
  list(APPEND CPACK_COMPONENTS_ALL python3)
  set(zyn_python_package_name python3-zyn3dgradop)
  math(EXPR next_minor "${debian_python_minor} + 1")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_NAME ${zyn_python_package_name})
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_DEPENDS
    "python3 (>= 3.${debian_python_minor}), python3 (<< 3.${next_minor}), python3-numpy")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_SUGGESTS "python3-mpi4py, python3-meshio, python3-vtk9")
  set(CPACK_COMPONENT_PYTHON3_DESCRIPTION "A module for Python 3 that borrows a mesh as arrays of numpy or reads it
from a file: Green-Gauss, least-squares and radial-basis gradients,
interpolation to faces and to points, and checks of the mesh. It contains
the library.")
  set(CPACK_DEBIAN_PYTHON3_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/python3/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/python3/prerm)
  install(FILES packaging/debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${zyn_python_package_name}
    COMPONENT python3 EXCLUDE_FROM_ALL)
  zyn_debian_changelog(${zyn_python_package_name} COMPONENT python3 EXCLUDE_FROM_ALL)
endif()
include(CPack)
