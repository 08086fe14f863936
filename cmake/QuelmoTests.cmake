# Links a test or benchmark built from `src` with the test support it needs.
# One that includes TestSupportGui.h, itself or through a header of its own
# folder, drives screens and gets quelmo_gui; every other one links the
# core alone, so it proves the core builds and runs without QtWidgets.
function(quelmo_link_test_support target src)
    get_filename_component(dir ${src} DIRECTORY)
    set(files ${src})
    file(STRINGS ${src} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"/]+\"")
    foreach(line ${includes})
        string(REGEX REPLACE ".*\"([^\"]+)\".*" "\\1" header "${line}")
        if(EXISTS ${dir}/${header})
            list(APPEND files ${dir}/${header})
        endif()
    endforeach()
    # Editing what a test includes may move it between the two.
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${files})
    set(gui FALSE)
    foreach(f ${files})
        file(STRINGS ${f} uses REGEX "#[ \t]*include[ \t]*\"TestSupportGui\\.h\"")
        if(uses)
            set(gui TRUE)
        endif()
    endforeach()
    if(gui)
        target_link_libraries(${target} PRIVATE quelmo_testsupport_gui)
    else()
        target_link_libraries(${target} PRIVATE quelmo_testsupport)
    endif()
endfunction()
