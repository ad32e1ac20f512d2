# What CPack makes of the components; included last, since CPack copies what is set when it is included.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kvo)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_VENDOR "Kvo")
set(CPACK_PACKAGE_CONTACT "The Kvo developers <kvo@example.org>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where the packages' own libraries are while their dependencies are found out.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# kvo_package(component name section summary description depends)
function(kvo_package component section summary description)
    cmake_parse_arguments(PARSE_ARGV 4 arg "" "" "DEPENDS;CONTROL")
    string(TOUPPER "${component}" key)
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${component} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    string(REPLACE ";" ", " depends "${arg_DEPENDS}")
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA "${arg_CONTROL}" PARENT_SCOPE)
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
endfunction()

set(own "(= ${PROJECT_VERSION})")
kvo_package(libposhost0 libs "Reference point-of-sale host framework"
    "Documents, loyalty base, cashier dialogs, HTTP and a persistent queue: the\ninterfaces that a loyalty plugin calls."
    DEPENDS libqt6sql6-sqlite
    CONTROL "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")
kvo_package(libposhost-dev libdevel "Reference point-of-sale host framework, for building plugins"
    "Headers and the CMake package PosHost."
    DEPENDS "libposhost0 ${own}" qt6-base-dev)
kvo_package(kvo misc "Loyalty plugin for a point-of-sale host"
    "libKvo.so connects a host's sales check with a loyalty service: customers by\ncard or telephone, prices, payment with points, and orders that are never lost."
    DEPENDS "libposhost0 ${own}")
kvo_package(kvo-till misc "Reference till for the terminal"
    "Sells with the loyalty plugin by hand or by scenario, looks after the queue of\nrequests and finds out what is wrong with a configuration."
    DEPENDS "kvo ${own}" adduser
    CONTROL "${PROJECT_SOURCE_DIR}/packaging/debian/postinst" "${PROJECT_SOURCE_DIR}/packaging/debian/prerm"
            "${PROJECT_SOURCE_DIR}/packaging/debian/postrm")
if(TARGET kvo-window)
    kvo_package(kvo-window misc "Reference till with a window for the cashier"
        "The same till as kvo-till, for touch screens and keyboards."
        DEPENDS "kvo-till ${own}")
endif()
kvo_package(loyalty-sim misc "Stand-in for a loyalty service"
    "Answers the service's HTTP interface on loopback, keeps a ledger of its own and\nfails on demand; for trying and testing tills.")
include(CPack)
