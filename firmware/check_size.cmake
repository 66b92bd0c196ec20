# cmake -D FILE=image -D SIZE=bytes -P check_size.cmake: a ROM image of another size is removed and fails.
file(SIZE "${FILE}" size)
if(NOT size EQUAL SIZE)
    file(REMOVE "${FILE}")
    message(FATAL_ERROR "${FILE} has ${size} bytes instead of ${SIZE}: the code has outgrown its place")
endif()
