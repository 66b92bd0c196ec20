cmake_minimum_required(VERSION 3.25)
# What libkiv asks of its surroundings: memory, a few functions of the C library, and nothing that opens files, asks
# for the time, starts threads or throws. And what it shows: kiv.h.
#   cmake -D NM=nm -D LIBRARY=libkiv.so -P bare.cmake
execute_process(COMMAND ${NM} -D --undefined-only ${LIBRARY} OUTPUT_VARIABLE asked RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${NM} cannot read ${LIBRARY}")
endif()
set(allowed memchr memcmp memcpy memmove memset strcmp strlen snprintf vsnprintf
    __snprintf_chk __vsnprintf_chk __memcpy_chk __stack_chk_fail # the same with checks of the compiler's
    sin sqrt lround floor _ZSt7nothrow _ZnamRKSt9nothrow_t _ZdaPv # operator new[] that does not throw, delete[]
    __cxa_atexit __cxa_finalize __gmon_start__ _ITM_deregisterTMCloneTable _ITM_registerTMCloneTable __cpu_model)
string(REGEX MATCHALL "[^ \n]+\n" names "${asked}")
foreach(name ${names})
    string(REGEX REPLACE "[@\n].*" "" name "${name}")
    if(NOT name IN_LIST allowed)
        message(SEND_ERROR "libkiv asks for ${name}")
    endif()
endforeach()
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE shown)
string(REGEX MATCHALL "[^ \n]+\n" names "${shown}")
foreach(name ${names})
    string(REGEX REPLACE "[@\n].*" "" name "${name}")
    if(NOT name MATCHES "^(kiv_[a-z0-9_]+|_init|_fini|_edata|_end|__bss_start)$")
        message(SEND_ERROR "libkiv shows ${name}")
    endif()
endforeach()
list(LENGTH names shown)
if(shown LESS 50)
    message(SEND_ERROR "libkiv shows ${shown} names only")
endif()
