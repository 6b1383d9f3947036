# Of one package, run when it is made: copyright and changelogs as Debian reads them, packed manual pages, archives without what debuggers
# want. Takes PACKAGE, VERSION, MAINTAINER, CHANGES, LICENCE, and ROOT, the folder that becomes /usr.
function(pack)
    execute_process(COMMAND gzip -9n ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(folder ${ROOT}/share/doc/${PACKAGE})
file(READ ${LICENCE} licence)
string(REGEX MATCH "Copyright [^\n]*" holder "${licence}")
string(REGEX REPLACE "^.*Copyright [^\n]*\n\n" "" text "${licence}")
string(STRIP "${text}" text)
string(REPLACE "\n\n" "\n.\n" text "${text}")
string(REPLACE "\n" "\n " text "${text}")
set(own "Files: *\n${holder}\nLicense: Expat\n")
string(REPLACE "Copyright (c)" "Copyright:" own "${own}")
file(WRITE ${folder}/copyright
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\nUpstream-Name: scriptFramework\n"
    "Comment: The notices of the libraries that are compiled into the package are in the folder contained.\n\n${own}\nLicense: Expat\n ${text}\n")

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${folder}/changelog.Debian "scriptframework (${VERSION}) unstable; urgency=medium\n\n  * What is new is in changelog.gz.\n\n -- ${MAINTAINER}  ${now}\n")
file(COPY_FILE ${CHANGES} ${folder}/changelog)
pack(${folder}/changelog ${folder}/changelog.Debian)

file(GLOB pages ${ROOT}/share/man/man1/*.1)
if(pages)
    pack(${pages})
endif()
file(GLOB archives ${ROOT}/lib/*/*.a)
foreach(archive IN LISTS archives)
    execute_process(COMMAND strip --strip-debug --remove-section=.comment --remove-section=.note --enable-deterministic-archives ${archive}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
