# Writes the libraries that MODULE needs, those that need no other first, to MODULE.needed: a name a line.
# The host opens them in this order before the module itself. The loader then searches each library's own few
# dependencies for its symbols; opened all at once, it would search the hundred of the whole group.
execute_process(COMMAND ldd ${MODULE} OUTPUT_VARIABLE listing RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(WARNING "ldd does not list what ${MODULE} needs: it will load slower")
endif()
string(REGEX MATCHALL "[^ \t\n]+ =>" names "${listing}")
list(TRANSFORM names REPLACE " =>" "")
list(FILTER names EXCLUDE REGEX "^libVelnor") # Open already: the module was asked for by them.
list(REVERSE names)
list(JOIN names "\n" lines)
file(WRITE ${MODULE}.needed "${lines}\n")
