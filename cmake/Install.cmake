# What `cmake --install` puts under the prefix, in two components:
#   Runtime      the host, the tool, the plug-in, the platform libraries, the
#                resources, the links in bin and the manual pages
#   Development  the contract's headers, the CMake package, the pkg-config file
include(CMakePackageConfigHelpers)

install(DIRECTORY resources/ DESTINATION ${FACTORYMGR_INSTALL_RESOURCEDIR} COMPONENT Runtime)
# The headers of the contract: the interface and its record, the host
# objects the plug-in is handed, and the two platform services a host calls
# itself: the progress dialog that runs a task (ThreadDialogRun, in
# libThreadDialog) and the wording service that chooses the language
# (CTranslator, in libTranslator).
set(FACTORYMGR_PUBLIC_HEADERS
  FactoryMgr/include/IFactoryMgr.h FactoryMgr/include/FactoryParams.h
  platform/include/IDevice.h platform/include/ICard.h platform/include/ITaskState.h
  platform/include/IErrorNotifier.h platform/include/CardInfo.h platform/include/IThreadDialogOwner.h
  platform/include/ThreadDialogRun.h platform/include/CTranslator.h)
install(FILES ${FACTORYMGR_PUBLIC_HEADERS} DESTINATION ${FACTORYMGR_INSTALL_INCLUDEDIR} COMPONENT Development)

configure_package_config_file(cmake/FactoryMgrConfig.cmake.in ${CMAKE_BINARY_DIR}/install/FactoryMgrConfig.cmake
  INSTALL_DESTINATION lib/cmake/FactoryMgr
  PATH_VARS FACTORYMGR_INSTALL_INCLUDEDIR FACTORYMGR_INSTALL_BINDIR FACTORYMGR_INSTALL_RESOURCEDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/install/FactoryMgrConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/install/FactoryMgrConfig.cmake ${CMAKE_BINARY_DIR}/install/FactoryMgrConfigVersion.cmake
  DESTINATION lib/cmake/FactoryMgr COMPONENT Development)
configure_file(cmake/factorymgr.pc.in ${CMAKE_BINARY_DIR}/install/factorymgr.pc @ONLY)
# In share/pkgconfig: it names no architecture's paths, and the development package is for all.
install(FILES ${CMAKE_BINARY_DIR}/install/factorymgr.pc DESTINATION share/pkgconfig COMPONENT Development)

# The guide and the API reference, built from the public headers as a host
# sees them (copied together into the build tree) and shipped with the
# development files.
find_program(FACTORYMGR_DOXYGEN doxygen)
if(NOT FACTORYMGR_DOXYGEN)
  message(FATAL_ERROR "doxygen is needed for the API reference the package installs (scripts/deps installs it)")
endif()
set(sdk_include ${CMAKE_BINARY_DIR}/sdk/include/FactoryMgr)
set(sdk_html ${CMAKE_BINARY_DIR}/sdk/html)
list(TRANSFORM FACTORYMGR_PUBLIC_HEADERS PREPEND ${CMAKE_SOURCE_DIR}/ OUTPUT_VARIABLE sdk_headers)
add_custom_command(OUTPUT ${sdk_html}/index.html
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${sdk_include} ${sdk_html}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${sdk_include}
  COMMAND ${CMAKE_COMMAND} -E copy ${sdk_headers} ${sdk_include}
  COMMAND ${CMAKE_SOURCE_DIR}/scripts/docs ${sdk_include} ${sdk_html}
  DEPENDS ${sdk_headers} ${CMAKE_SOURCE_DIR}/docs/host-integration.md ${CMAKE_SOURCE_DIR}/docs/Doxyfile
          ${CMAKE_SOURCE_DIR}/scripts/docs
  WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
  COMMENT "The API reference")
add_custom_target(api-reference ALL DEPENDS ${sdk_html}/index.html)
install(FILES docs/host-integration.md DESTINATION share/doc/factorymgr COMPONENT Development)
install(DIRECTORY ${sdk_html}/ DESTINATION share/doc/factorymgr/html COMPONENT Development)
# The two example hosts, which build from there against the installed package.
install(DIRECTORY examples/ DESTINATION share/doc/factorymgr/examples COMPONENT Development)

# The host and the tool are reached from bin (and so from PATH) by relative
# links; each runs from its own directory, where the plug-in, the libraries
# and ../Resources are.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/install/bin)
foreach(program QuorvaneHost factoryparams)
  file(CREATE_LINK ../${FACTORYMGR_INSTALL_BINDIR}/${program} ${CMAKE_BINARY_DIR}/install/bin/${program} SYMBOLIC)
  install(FILES ${CMAKE_BINARY_DIR}/install/bin/${program} DESTINATION bin COMPONENT Runtime)
  # The page names the version it describes.
  configure_file(docs/man/${program}.1 ${CMAKE_BINARY_DIR}/install/${program}.1 @ONLY)
  execute_process(COMMAND gzip -9nc ${CMAKE_BINARY_DIR}/install/${program}.1
    OUTPUT_FILE ${CMAKE_BINARY_DIR}/install/${program}.1.gz COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${CMAKE_BINARY_DIR}/install/${program}.1.gz DESTINATION share/man/man1 COMPONENT Runtime)
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/changelog)

# Each package's copyright and changelog, where Debian looks for them.
execute_process(COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/cmake/changelog
  OUTPUT_FILE ${CMAKE_BINARY_DIR}/install/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
install(FILES cmake/copyright ${CMAKE_BINARY_DIR}/install/changelog.gz
  DESTINATION share/doc/factorymgr COMPONENT Runtime)
install(FILES cmake/copyright ${CMAKE_BINARY_DIR}/install/changelog.gz
  DESTINATION share/doc/factorymgr-dev COMPONENT Development)
