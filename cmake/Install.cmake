# What `cmake --install` puts under the prefix, in two components:
#   Runtime      the host, the tool, the plug-in, the platform libraries, the resources
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
install(FILES ${CMAKE_BINARY_DIR}/install/factorymgr.pc DESTINATION lib/pkgconfig COMPONENT Development)

# Each package's copyright and changelog, where Debian looks for them.
execute_process(COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/cmake/changelog
  OUTPUT_FILE ${CMAKE_BINARY_DIR}/install/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
install(FILES cmake/copyright ${CMAKE_BINARY_DIR}/install/changelog.gz
  DESTINATION share/doc/factorymgr COMPONENT Runtime)
install(FILES cmake/copyright ${CMAKE_BINARY_DIR}/install/changelog.gz
  DESTINATION share/doc/factorymgr-dev COMPONENT Development)
