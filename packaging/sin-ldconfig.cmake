# Run by CPack after it built the Debian package: takes out the maintainer
# scripts that only call ldconfig (the package's one library is a private
# module that the loader never looks for) and builds the package again.
foreach(deb IN LISTS CPACK_PACKAGE_FILES)
    if(NOT deb MATCHES "\\.deb$")
        continue()
    endif()
    set(dir "${deb}.d")
    file(REMOVE_RECURSE "${dir}")
    execute_process(COMMAND dpkg-deb -R "${deb}" "${dir}" COMMAND_ERROR_IS_FATAL ANY)
    foreach(script postinst postrm)
        set(f "${dir}/DEBIAN/${script}")
        if(EXISTS "${f}")
            file(READ "${f}" texto)
            string(REGEX REPLACE "#[^\n]*\n|set -e\n|ldconfig\n|if [^\n]*\n|fi\n|[ \t\n]" "" resto
                   "${texto}")
            if(NOT resto STREQUAL "")
                message(FATAL_ERROR "${script} does more than call ldconfig:\n${texto}")
            endif()
            file(REMOVE "${f}")
        endif()
    endforeach()
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz -b "${dir}" "${deb}"
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE "${dir}")
endforeach()
