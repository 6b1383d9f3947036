# The Debian packages algoserver and libscriptframework-dev, by cpack. What Debian wants beside the files of `make install`: copyright, changelogs,
# packed manual pages; and the documentation and the examples.
set(SCRIPTFRAMEWORK_MAINTAINER "The scriptFramework authors <authors@scriptframework.invalid>" CACHE STRING "Whom the Debian packages name as maintainer")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME scriptframework)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # or it were the first line of both descriptions
set(CPACK_PACKAGE_CONTACT "${SCRIPTFRAMEWORK_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL algoserver dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE ${CPACK_PACKAGE_NAME})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_ALGOSERVER_PACKAGE_NAME algoserver)
set(CPACK_DEBIAN_ALGOSERVER_PACKAGE_SECTION science)
set(CPACK_DEBIAN_ALGOSERVER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ALGOSERVER_PACKAGE_DEPENDS tzdata)  # and what its libraries come to
set(CPACK_DEBIAN_ALGOSERVER_PACKAGE_RECOMMENDS lua-check)  # of algoserver check
set(CPACK_DEBIAN_ALGOSERVER_DESCRIPTION "replays recorded markets to trading algorithms written in Lua
algoserver runs scripts over recorded quotes, trades, depth and bars, in
recorded time, with a simulated exchange. It tells what they would have
earned, sweeps over their parameters, checks and profiles them.")

# The headers of the library need what it is made of; those of the host more.
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libscriptframework-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libboost-dev, libbz2-dev, libfmt-dev, libhowardhinnant-date-dev, liblua5.1-0-dev, liblzma-dev, libseccomp-dev, libspdlog-dev, \
libsqlite3-dev, libtomlplusplus-dev, libzstd-dev, nettle-dev, nlohmann-json3-dev, pkg-config, zlib1g-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "algoserver, cmake")
set(CPACK_DEBIAN_DEV_DESCRIPTION "runs trading algorithms written in Lua inside a program (development files)
The C++20 library scriptFramework with its headers and CMake package: it runs
scripts in Lua 5.1 and gives them prices, orders, bars and indicators of the
program around it. The parts of the host algoserver are a component apart.")

target_link_options(algoserver PRIVATE -Wl,-z,now)  # as Debian hardens programs

# Documents a package; after its name the Debian packages whose code it holds, since their terms ask for their notices. Those of Boost do not, of
# compiled code, and shared libraries come in packages of their own.
function(document component package)
    foreach(name IN LISTS ARGN)
        install(FILES /usr/share/doc/${name}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}/contained RENAME ${name} COMPONENT ${component})
    endforeach()
    install(CODE "
        set(PACKAGE ${package})
        set(VERSION ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
        set(MAINTAINER \"${SCRIPTFRAMEWORK_MAINTAINER}\")
        set(CHANGES \"${PROJECT_SOURCE_DIR}/CHANGELOG.md\")
        set(LICENCE \"${PROJECT_SOURCE_DIR}/LICENSE\")
        set(ROOT \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
        include(\"${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake\")" COMPONENT ${component})
endfunction()
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/algoserver COMPONENT algoserver)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/algoserver COMPONENT algoserver)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/algoserver COMPONENT algoserver PATTERN embedding EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/embedding DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libscriptframework-dev/examples COMPONENT dev)
set(contained libeigen3-dev libjs-dygraphs libtomlplusplus-dev nlohmann-json3-dev)
document(algoserver algoserver ${contained} libcli11-dev liblua5.1-0-dev)
document(dev libscriptframework-dev ${contained})
include(CPack)
