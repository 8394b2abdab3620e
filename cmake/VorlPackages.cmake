# Debian packages, made by scripts/package:
#   libvorl1     what programs need to run
#   libvorl-dev  what programs need to be built, and the texts
#   vorl         the tool
if(NOT VORL_INSTALL OR NOT PROJECT_IS_TOP_LEVEL OR NOT BUILD_SHARED_LIBS OR NOT TARGET vorl_tool)
    return()
endif()
# They would be labelled for this machine, and depend on its packages: those are the ones that dpkg-shlibdeps knows.
if(CMAKE_CROSSCOMPILING)
    message(STATUS "No Debian packages: they are made on a machine, or in a root, of their own architecture")
    return()
endif()

set(VORL_PACKAGE_CONTACT "libVORL maintainers <maintainers@libvorl.invalid>" CACHE STRING
    "Who answers for the packages: name and address")
set(VORL_PACKAGE_RELEASE 1 CACHE STRING "The revision of the packages made of this version")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vorl)
# Each package has a description of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${VORL_PACKAGE_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/VorlDebianFiles.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${VORL_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_SOURCE vorl)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The packages of one version belong together; those of others need this version of the library or a later one.
set(vorl_package_version "${PROJECT_VERSION}-${VORL_PACKAGE_RELEASE}")
set(vorl_runtime_package "libvorl${PROJECT_VERSION_MAJOR}")
set(vorl_purpose "libVORL protects what an application on a device exchanges with its
service: it agrees keys by Diffie-Hellman, wraps messages in a small
versioned envelope, opens what it receives under a policy, and makes and
verifies RSA signatures.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${vorl_runtime_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Written out, since CPack would have each package run ldconfig by itself.
file(CONFIGURE OUTPUT "${vorl_generated_dir}/shlibs"
    CONTENT "libvorl ${PROJECT_VERSION_MAJOR} ${vorl_runtime_package} (>= ${vorl_package_version})\n")
file(CONFIGURE OUTPUT "${vorl_generated_dir}/triggers" CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${vorl_generated_dir}/shlibs;${vorl_generated_dir}/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "message security for devices
${vorl_purpose}

This package has the shared library.")

set(CPACK_DEBIAN_DEVELOPER_PACKAGE_NAME libvorl-dev)
set(CPACK_DEBIAN_DEVELOPER_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPER_PACKAGE_DEPENDS "${vorl_runtime_package} (= ${vorl_package_version}), libssl-dev")
set(CPACK_DEBIAN_DEVELOPER_PACKAGE_SUGGESTS "libgtest-dev, pkg-config")
set(CPACK_DEBIAN_DEVELOPER_DESCRIPTION "message security for devices - development files
${vorl_purpose}

This package has what programs need to be built: the headers, the packages
for CMake and pkg-config, texts and examples.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME vorl)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${vorl_runtime_package} (>= ${vorl_package_version})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "message security for devices - command-line tool
${vorl_purpose}

This package has the command-line tool, which does the same with files.")

set(CPACK_COMPONENTS_ALL runtime development documentation tool)
include(CPack)
cpack_add_component_group(developer DISPLAY_NAME developer)
cpack_add_component(runtime)
cpack_add_component(development GROUP developer)
cpack_add_component(documentation GROUP developer)
cpack_add_component(tool)
