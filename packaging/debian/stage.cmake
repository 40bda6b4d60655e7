# Between installing into the staging folder and packing it: what Debian wants to be different from a
# plain installation. Everything here is about files; who depends on what is in ../CMakeLists.txt.
cmake_minimum_required(VERSION 3.22)
set(stage ${CPACK_TEMPORARY_DIRECTORY})
set(debian ${CPACK_VOSTEL_SOURCE_DIR}/packaging/debian)
set(doc ${stage}/usr/share/doc/vostel)

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Without symbols, and without the notes that compilers leave.
foreach(program bin/vostel libexec/vostel/vostel-nettop)
    run(strip --strip-unneeded --remove-section=.comment --remove-section=.note ${stage}/usr/${program})
endforeach()

# The man pages name places below the prefix of the package.
set(PROJECT_VERSION ${CPACK_PACKAGE_VERSION})
set(CMAKE_INSTALL_FULL_LIBEXECDIR /usr/libexec)
foreach(page vostel vostel-nettop)
    set(file ${stage}/usr/share/man/man1/${page}.1)
    configure_file(${debian}/../man/${page}.1.in ${file} @ONLY)
    run(gzip -9nf ${file})
endforeach()

# Debian's shell looks here instead.
file(MAKE_DIRECTORY ${stage}/usr/share/zsh/vendor-completions)
file(RENAME ${stage}/usr/share/zsh/site-functions/_vostel ${stage}/usr/share/zsh/vendor-completions/_vostel)
file(REMOVE_RECURSE ${stage}/usr/share/zsh/site-functions)

# The licence's text is on every Debian machine; the changes are kept in Debian's format.
file(REMOVE ${doc}/LICENSE ${doc}/CHANGELOG.md)
file(COPY ${debian}/copyright DESTINATION ${doc})
run(sh ${debian}/changelog.sh ${CPACK_VOSTEL_SOURCE_DIR}/CHANGELOG.md ${CPACK_PACKAGE_VERSION}
    ${CPACK_DEBIAN_PACKAGE_MAINTAINER} ${doc}/changelog)
run(gzip -9nf ${doc}/changelog)

# Whatever the umask and the permissions of the sources were.
run(chmod -R u=rwX,go=rX ${stage}/usr)
