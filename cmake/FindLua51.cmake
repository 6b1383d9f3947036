# The Lua behind SCRIPTFRAMEWORK_LUA, as the target Lua51::Lua51. Used by the build and by the installed package. The
# archive is taken where there is one: the binding calls Lua's interface many times for one event, and a call
# into a shared library costs a quarter more.
find_package(PkgConfig REQUIRED)
if(NOT TARGET Lua51::Lua51)
    pkg_check_modules(LUA51 REQUIRED ${SCRIPTFRAMEWORK_LUA})
    list(GET LUA51_LIBRARIES 0 lua51_name)
    find_library(LUA51_ARCHIVE lib${lua51_name}.a HINTS ${LUA51_LIBRARY_DIRS})
    find_library(LUA51_SHARED ${lua51_name} HINTS ${LUA51_LIBRARY_DIRS})
    add_library(Lua51::Lua51 INTERFACE IMPORTED GLOBAL)
    target_include_directories(Lua51::Lua51 INTERFACE ${LUA51_INCLUDE_DIRS})
    if(LUA51_ARCHIVE)
        target_link_libraries(Lua51::Lua51 INTERFACE ${LUA51_ARCHIVE} ${CMAKE_DL_LIBS} m)
    else()
        target_link_libraries(Lua51::Lua51 INTERFACE ${LUA51_SHARED})
    endif()
endif()
