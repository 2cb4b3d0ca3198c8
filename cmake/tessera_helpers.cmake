# Build helpers shared by every folder.

function(tessera_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    if(TESSERA_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# tessera_embed_resources(target TYPE NAME FILE [TYPE NAME FILE ...])
# Compiles the files into the module's resource table, which the platform layer finds
# through the module handle (POSIX stand-in for Win32 resources).
function(tessera_embed_resources target)
    set(args ${ARGN})
    set(out ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.cpp)
    set(files)
    set(entries)
    list(LENGTH args n)
    math(EXPR last "${n} - 1")
    foreach(i RANGE 0 ${last} 3)
        math(EXPR j "${i} + 1")
        math(EXPR k "${i} + 2")
        list(GET args ${i} type)
        list(GET args ${j} name)
        list(GET args ${k} file)
        list(APPEND files ${file})
        string(APPEND entries "${type}|${name}|${file};")
    endforeach()
    add_custom_command(OUTPUT ${out}
        COMMAND ${CMAKE_COMMAND} "-DENTRIES=${entries}" -DOUT=${out}
                -P ${PROJECT_SOURCE_DIR}/cmake/embed_resources.cmake
        DEPENDS ${files} ${PROJECT_SOURCE_DIR}/cmake/embed_resources.cmake
        COMMENT "Embedding resources of ${target}"
        VERBATIM)
    target_sources(${target} PRIVATE ${out})
endfunction()
