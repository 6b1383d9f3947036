# The Lua behind SCRIPTFRAMEWORK_LUA, as the target PkgConfig::LUA51. Used by the build and by the installed package.
find_package(PkgConfig REQUIRED)
if(NOT TARGET PkgConfig::LUA51)
    pkg_check_modules(LUA51 REQUIRED IMPORTED_TARGET GLOBAL ${SCRIPTFRAMEWORK_LUA})
endif()
