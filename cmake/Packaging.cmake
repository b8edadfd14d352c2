# Debian packages, one a component: `cpack -G DEB` in a build configured
# with -DCMAKE_INSTALL_PREFIX=/usr gives libparcelvane (the shared library),
# libparcelvane-dev (headers, static library, CMake package, pkg-config file)
# and parcelvane (the command).
set(CPACK_PACKAGE_NAME parcelvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CONTACT "parcelvane maintainers <maintainers@parcelvane.invalid>")
# The library looks for its registry file under the prefix it was built for.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})

# Packages carry no debugging information.
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
if(PARCELVANE_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL Tool)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The command's dependency on the library comes from the line below, not
# from dpkg-shlibdeps, which only has to find the library in the build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libparcelvane)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS media-types)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (shared library)")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libparcelvane-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libparcelvane (= ${PROJECT_VERSION}), libicu-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "${PROJECT_DESCRIPTION} (headers, static library, CMake package and pkg-config file)")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME parcelvane)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION mail)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libparcelvane (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "${PROJECT_DESCRIPTION} (the parcelvane command)")

include(CPack)
