# Fails when the product's code calls the C library's transcendental functions, whose last
# bits differ from one runtime to another, so that the Linux and Windows pictures would drift
# apart; it calls q5math (core/services/portable_math.h) instead.
#   cmake -DROOT=<source folder> -P pixel_paths_use_portable_math.cmake
set(names "sin|cos|tan|asin|acos|atan|atan2|sinh|cosh|tanh|pow|exp|exp2|expm1|log|log2|log10|log1p|cbrt|hypot")
set(call "(^|std::|[^A-Za-z0-9_:.>])(${names})[fl]?[ ]*\\(")
set(files)
foreach(folder interface core zbuffer plugin host)
    file(GLOB_RECURSE found RELATIVE ${ROOT}
         ${ROOT}/${folder}/*.cpp ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.inc)
    list(APPEND files ${found})
endforeach()
list(FILTER files EXCLUDE REGEX "^core/services/portable_math\\.")
list(LENGTH files count)
if(count LESS 100)
    message(FATAL_ERROR "only ${count} source files under ${ROOT}")
endif()
set(calls "")
foreach(file IN LISTS files)
    file(STRINGS ${ROOT}/${file} lines REGEX "${call}")
    foreach(line IN LISTS lines)
        string(APPEND calls "  ${file}: ${line}\n")
    endforeach()
endforeach()
if(calls)
    message(FATAL_ERROR "C library transcendental functions called; use q5math:\n${calls}")
endif()
message(STATUS "${count} source files call no C library transcendental function")
