# Writes the copyright notices of Debian packages, and the common licences that they refer to, to one file. Stops if a
# package has none.
#
# target     the file to write
# packages   names of the packages

set(text "orvane uses the libraries below, as part of its files or beside them. Each section repeats the notices of the\n\
Debian package that the library comes from. Common licences that they refer to are at the end.\n")
set(common "")
foreach(package IN LISTS packages)
  set(source /usr/share/doc/${package}/copyright)
  if(NOT EXISTS ${source})
    message(FATAL_ERROR "${source} is missing, which the package must contain")
  endif()
  file(READ ${source} notice)
  string(APPEND text "\n======== ${package} ========\n\n${notice}")
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
