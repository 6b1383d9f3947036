# The installed package: libraries, headers below include/scriptFramework (so that the quoted includes resolve),
# algoserver, and find_package(scriptFramework) with scriptFramework::scriptFramework and, as the component host,
# scriptFramework::host. Only the host needs SQLite, the unpackers and time zones, so it is exported apart.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(nx_script PROPERTIES EXPORT_NAME scriptFramework)
set_target_properties(nx_host PROPERTIES EXPORT_NAME host)
add_library(scriptFramework::scriptFramework ALIAS nx_script)
add_library(scriptFramework::host ALIAS nx_host)

get_property(floors GLOBAL PROPERTY NX_FLOORS)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/scriptFramework)
list(REMOVE_ITEM floors nx_host)
install(TARGETS ${floors} EXPORT scriptFrameworkTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(TARGETS nx_host EXPORT scriptFrameworkHostTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(TARGETS algoserver RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT algoserver)
# Manual pages and completions, which the program writes by itself. Debian's zsh has no folder of packages but its own.
set(zsh_folder zsh/site-functions)
if(SCRIPTFRAMEWORK_DEB)
    set(zsh_folder zsh/vendor-completions)
endif()
install(CODE "
    set(data \"${CMAKE_INSTALL_DATADIR}\")
    cmake_path(ABSOLUTE_PATH data BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
    set(data \"\$ENV{DESTDIR}\${data}\")
    execute_process(COMMAND \"$<TARGET_FILE:algoserver>\" man -o \"\${data}/man/man1\" COMMAND_ERROR_IS_FATAL ANY)
    foreach(file bash-completion/completions/algoserver ${zsh_folder}/_algoserver fish/vendor_completions.d/algoserver.fish)
        cmake_path(GET file PARENT_PATH folder)
        string(REGEX MATCH \"^[a-z]+\" shell \"\${file}\")
        file(MAKE_DIRECTORY \"\${data}/\${folder}\")
        execute_process(COMMAND \"$<TARGET_FILE:algoserver>\" completion \"\${shell}\" -o \"\${data}/\${file}\"
            COMMAND_ERROR_IS_FATAL ANY)
    endforeach()" COMPONENT algoserver)
# What a script finds, for editors; the program writes it by itself.
install(CODE "
    set(folder \"${CMAKE_INSTALL_DATADIR}/scriptFramework/types\")
    cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
    execute_process(COMMAND \"$<TARGET_FILE:algoserver>\" types -o \"\$ENV{DESTDIR}\${folder}\" COMMAND_ERROR_IS_FATAL ANY)"
    COMPONENT algoserver)
foreach(folder base indicators quant api scriptFramework host)
    install(DIRECTORY ${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/scriptFramework COMPONENT dev
        FILES_MATCHING PATTERN "*.h" PATTERN templates EXCLUDE)
endforeach()
install(EXPORT scriptFrameworkTargets NAMESPACE scriptFramework:: DESTINATION ${package_dir} COMPONENT dev)
install(EXPORT scriptFrameworkHostTargets NAMESPACE scriptFramework:: DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(cmake/scriptFrameworkConfig.cmake.in scriptFrameworkConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(scriptFrameworkConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/scriptFrameworkConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/scriptFrameworkConfigVersion.cmake
    cmake/FindLua51.cmake
    DESTINATION ${package_dir} COMPONENT dev)

if(SCRIPTFRAMEWORK_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # An archive with intermediate code would make every host optimise the whole library anew each time it links: half
    # a minute instead of a third of a second. algoserver is linked from the build's archives, which keep it.
    get_property(floors GLOBAL PROPERTY NX_FLOORS)
    set(archives)
    foreach(floor IN LISTS floors)
        list(APPEND archives $<TARGET_FILE_NAME:${floor}>)
    endforeach()
    install(CODE "
        set(folder \"${CMAKE_INSTALL_LIBDIR}\")
        cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
        foreach(archive IN ITEMS ${archives})
            execute_process(COMMAND \"${CMAKE_OBJCOPY}\" -p -R .gnu.lto_* -R .gnu.debuglto_*
                \"\$ENV{DESTDIR}\${folder}/\${archive}\" COMMAND_ERROR_IS_FATAL ANY)
        endforeach()" COMPONENT dev)
endif()
if(SCRIPTFRAMEWORK_DEB)
    include(${CMAKE_CURRENT_LIST_DIR}/Packages.cmake)
endif()
