# The Debian packages algoserver and libscriptframework-dev, by cpack. What Debian wants beside the files of `make install`: copyright, changelogs,
# packed manual pages; and the documentation and the examples.
set(SCRIPTFRAMEWORK_MAINTAINER "The scriptFramework authors <authors@scriptframework.invalid>" CACHE STRING "Whom the Debian packages name as maintainer")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME scriptframework)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${SCRIPTFRAMEWORK_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL algoserver dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
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
libsqlite3-dev, libssl-dev, libtomlplusplus-dev, libzstd-dev, nlohmann-json3-dev, pkg-config, zlib1g-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "algoserver, cmake")
set(CPACK_DEBIAN_DEV_DESCRIPTION "runs trading algorithms written in Lua inside a program (development files)
The C++20 library scriptFramework with its headers and CMake package: it runs
scripts in Lua 5.1 and gives them prices, orders, bars and indicators of the
program around it. The parts of the host algoserver are a component apart.")

function(document component package)
    install(CODE "
        set(PACKAGE ${package})
        set(VERSION ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
        set(MAINTAINER \"${SCRIPTFRAMEWORK_MAINTAINER}\")
        set(CHANGES \"${PROJECT_SOURCE_DIR}/CHANGELOG.md\")
        set(LICENCE \"${PROJECT_SOURCE_DIR}/LICENSE\")
        set(ROOT \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
        include(\"${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake\")" COMPONENT ${component})
endfunction()
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/algoserver COMPONENT algoserver)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/algoserver COMPONENT algoserver)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/algoserver COMPONENT algoserver PATTERN embedding EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/embedding DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libscriptframework-dev/examples COMPONENT dev)
document(algoserver algoserver)
document(dev libscriptframework-dev)
include(CPack)
