# Writes the copyright notices of libraries, and the common licences that they refer to, to one file. Stops if a library
# has none.
#
# target    the file to write
# notices   names of Debian packages, or paths of files with the notice

set(text "orvane uses the libraries below, as part of its files or beside them. Each section repeats the notices of the\n\
package that the library comes from. Common licences that they refer to are at the end.\n")
set(common "")
foreach(name IN LISTS notices)
  set(source /usr/share/doc/${name}/copyright)
  if(name MATCHES "/([^/]+)/[^/]+$")
    set(source ${name})
    set(name ${CMAKE_MATCH_1})
  endif()
  if(NOT EXISTS ${source})
    message(FATAL_ERROR "${source} is missing, which the package must contain")
  endif()
  file(READ ${source} notice)
  string(APPEND text "\n======== ${name} ========\n\n${notice}")
  string(REGEX MATCHALL "/usr/share/common-licenses/[A-Za-z0-9.-]*[A-Za-z0-9]" references "${notice}")
  list(APPEND common ${references})
endforeach()
list(REMOVE_DUPLICATES common)
list(SORT common)
foreach(license IN LISTS common)
  file(READ ${license} notice)
  string(APPEND text "\n======== ${license} ========\n\n${notice}")
endforeach()
file(WRITE ${target} "${text}")
