# Writes the service worker with a name for its store made of the version and of the bytes of all that it keeps.
#   cmake -D PAGE=folder -D VERSION=x -D SOURCE=service-worker.js.in -P stamp.cmake
file(GLOB files LIST_DIRECTORIES false ${PAGE}/*)
list(FILTER files EXCLUDE REGEX "service-worker.js$")
list(SORT files)
set(sums "")
foreach(file ${files})
    file(SHA256 ${file} sum)
    string(APPEND sums ${sum})
endforeach()
string(SHA256 sum "${sums}")
string(SUBSTRING ${sum} 0 12 sum)
set(KIV_WEB_STAMP "${VERSION}-${sum}")
configure_file(${SOURCE} ${PAGE}/service-worker.js @ONLY)
