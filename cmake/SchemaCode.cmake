# The generated types: cvsoa-gen turns each schema into one header and one source.
#
#   cvsoa_schema_header(<out-var> <schema.xsd>)
#     The header path the generator writes for the schema, from its targetNamespace
#     "<base>/Schemas/<Area>/<yyyy-mm>/<Service>": corvane/soa/schemas/<Area>/_yyyy_mm/<Service>.hpp.
#
#   cvsoa_generate_schema_code(<target> OUT <dir> SCHEMAS <files>... [IMPORT_DIRS <dirs>...]
#                              [GENERATOR <command>] [HEADERS_VAR <var>])
#     One build step per schema, rerun when the schema, a schema it imports or the generator
#     changes; the sources are added to <target>.
function(cvsoa_schema_header out schema)
  file(STRINGS ${schema} lines REGEX "targetNamespace=")
  string(REGEX MATCH "targetNamespace=\"[^\"]*\"" ns "${lines}")
  string(REGEX REPLACE "targetNamespace=\"(.*)\"" "\\1" ns "${ns}")
  string(REGEX REPLACE "^.*/Schemas/" "" path "${ns}")
  string(REPLACE "/" ";" parts "${path}")
  list(POP_BACK parts service)
  set(dirs "")
  foreach(part IN LISTS parts)
    if(part MATCHES "^([0-9][0-9][0-9][0-9])-([0-9][0-9])$")
      set(part "_${CMAKE_MATCH_1}_${CMAKE_MATCH_2}")
    endif()
    string(APPEND dirs "${part}/")
  endforeach()
  string(SUBSTRING "${service}" 0 1 first)
  string(SUBSTRING "${service}" 1 -1 rest)
  string(TOUPPER "${first}" first)
  string(TOLOWER "${rest}" rest)
  set(${out} "corvane/soa/schemas/${dirs}${first}${rest}.hpp" PARENT_SCOPE)
endfunction()

function(cvsoa_generate_schema_code target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUT;GENERATOR;HEADERS_VAR;EXPORT_MACRO;EXPORT_HEADER"
    "SCHEMAS;IMPORT_DIRS")
  if(NOT arg_GENERATOR)
    set(arg_GENERATOR $<TARGET_FILE:cvsoa-gen>)
  endif()
  # The generator's target when it is one (built here or imported), so that a new generator
  # regenerates.
  if(arg_GENERATOR MATCHES "^\\$<TARGET_FILE:(.*)>$")
    set(generator_dep ${CMAKE_MATCH_1})
  endif()
  set(options "")
  foreach(dir IN LISTS arg_IMPORT_DIRS)
    list(APPEND options -I ${dir})
  endforeach()
  if(arg_EXPORT_MACRO)
    list(APPEND options --export-macro ${arg_EXPORT_MACRO} --export-header ${arg_EXPORT_HEADER})
  endif()
  set(headers "")
  foreach(schema IN LISTS arg_SCHEMAS)
    get_filename_component(schema ${schema} ABSOLUTE)
    cvsoa_schema_header(header ${schema})
    string(REGEX REPLACE "\\.hpp$" ".cpp" source "${header}")
    string(MAKE_C_IDENTIFIER "${header}" stem)
    add_custom_command(
      OUTPUT ${arg_OUT}/${header} ${arg_OUT}/${source}
      COMMAND ${arg_GENERATOR} -o ${arg_OUT} ${options} --depfile ${arg_OUT}/${stem}.d ${schema}
      DEPENDS ${schema} ${generator_dep}
      DEPFILE ${arg_OUT}/${stem}.d
      COMMENT "Generating ${header}"
      VERBATIM)
    target_sources(${target} PRIVATE ${arg_OUT}/${source})
    list(APPEND headers ${header})
  endforeach()
  if(arg_HEADERS_VAR)
    set(${arg_HEADERS_VAR} ${headers} PARENT_SCOPE)
  endif()
endfunction()

#   corvane_soa_generate(<target> SCHEMAS <files>... [IMPORT_DIRS <dirs>...])
#     For a user's own schemas, with the installed package: generates their types, adds the
#     sources to <target> and the generated headers' directory to its include path. Imports of
#     the library's own schemas (Base, ...) are found among the installed ones.
function(corvane_soa_generate target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SCHEMAS;IMPORT_DIRS")
  set(out ${CMAKE_CURRENT_BINARY_DIR}/corvane_soa_generated)
  cvsoa_generate_schema_code(${target} OUT ${out} SCHEMAS ${arg_SCHEMAS}
    IMPORT_DIRS ${arg_IMPORT_DIRS} ${CORVANE_SOA_SCHEMA_DIR}
    GENERATOR $<TARGET_FILE:Corvane::cvsoa-gen>)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${out}>)
  target_link_libraries(${target} PUBLIC Corvane::Soa)
endfunction()
