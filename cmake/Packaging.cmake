# Debian packages, with `cpack` in a build tree:
#   factorymgr      under /usr/lib/factorymgr the host, the tool, the plug-in, the
#                   platform libraries and the resources; the links in /usr/bin, the
#                   manual pages
#   factorymgr-dev  the headers, the CMake package, the pkg-config file, the link
#                   names of libThreadDialog and libTranslator, the guide, the API
#                   reference and the example hosts
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME factorymgr)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The FactoryMgr developers")
set(CPACK_PACKAGE_CONTACT "The FactoryMgr developers <factorymgr@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME factorymgr)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION misc)
# Dependencies from the binaries; the platform libraries are the package's own.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/bin)
# Qt's own buttons and file dialogs in the host's chosen language.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS qt6-translations-l10n)
# The first line is the synopsis; CPack indents the rest and marks empty lines.
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "factory parameter plug-in for laser machine hosts
FactoryMgr is the plug-in in which a laser machine builder sets and keeps a
machine's factory parameters: motor axes, laser sources, machine options and
processing speeds. It reads and writes them to the controller, shows what the
controller refused, upgrades firmware and calibrates the X and Y steps.

This package holds the plug-in, the host platform libraries it links
against, its resources, and a reference host (QuorvaneHost) that runs it on a
simulated controller.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME factorymgr-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_ARCHITECTURE all)
# qt6-5compat-dev: the CMake package and the pkg-config file require Core5Compat.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "factorymgr (= ${PROJECT_VERSION}), qt6-base-dev (>= ${FACTORYMGR_QT_MIN}), qt6-5compat-dev (>= ${FACTORYMGR_QT_MIN})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "factory parameter plug-in for laser machine hosts - development files
FactoryMgr is the plug-in in which a laser machine builder sets and keeps a
machine's factory parameters.

This package holds what a host application compiles against: the headers of
the plug-in's interface, its parameter record and the host objects, a CMake
package (find_package(FactoryMgr)) and a pkg-config file (factorymgr), with
the integration guide, the API reference and two example hosts.")

include(CPack)
