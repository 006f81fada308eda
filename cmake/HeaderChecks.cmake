# Every installed header must compile on its own and together with all the others in any order.
# One translation unit per header includes it twice (the guard must hold) and nothing else; one
# more includes every header in reverse order. The list is read from the tree at configure time,
# so a new header is checked without anyone having to add it here.
#
#   cvsoa_add_header_checks(<target> HEADERS <paths relative to an include directory>...)
function(cvsoa_add_header_checks target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS")
  set(dir ${CMAKE_CURRENT_BINARY_DIR}/${target})
  set(sources "")
  foreach(header IN LISTS arg_HEADERS)
    string(MAKE_C_IDENTIFIER "${header}" stem)
    set(source ${dir}/${stem}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n#include <${header}>\n")
    list(APPEND sources ${source})
  endforeach()
  set(reversed ${arg_HEADERS})
  list(REVERSE reversed)
  list(TRANSFORM reversed PREPEND "#include <")
  list(TRANSFORM reversed APPEND ">")
  list(JOIN reversed "\n" all)
  file(CONFIGURE OUTPUT ${dir}/all_in_reverse_order.cpp CONTENT "${all}\n")
  list(APPEND sources ${dir}/all_in_reverse_order.cpp)
  add_library(${target} OBJECT ${sources})
  target_link_libraries(${target} PRIVATE Corvane::Soa cvsoa_flags)
endfunction()
