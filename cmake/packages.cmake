# The Debian packages, one a component.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME brevikconfig)
set(CPACK_PACKAGE_CONTACT "The brevikconfig developers <brevikconfig@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# What the packages of one build need of each other stands below by hand; the rest is found by the
# libraries that the files are linked with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(brevik_same_library
    "libbrevikconfig${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libbrevikconfig${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "The library, its platform, and the component objects that it makes.")
# Loaded at the first question to the catalogue, so that no file is linked with it.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS libsqlcipher0)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libbrevikconfig-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${brevik_same_library}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "brevikctl, gcc, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Development files: headers, the CMake package, the pkg-config file, and examples with a demo.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME brevikctl)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${brevik_same_library}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "The tool that inspects and repairs a machine: certificates, the registry, the catalogue, cookies, files and a live trace.")

include(CPack)
