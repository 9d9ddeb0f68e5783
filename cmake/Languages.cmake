# String tables: resources/strings/<LANG>.txt is the one source of every text.
# From it the build makes the table compiled into the portable core (English), the
# control library's own STRINGTABLE (English) and one resource-only library per language.
set(TQ_STRINGS_DIR ${CMAKE_SOURCE_DIR}/resources/strings)
set(TQ_GEN_STRINGS ${CMAKE_SOURCE_DIR}/tools/gen_strings.py)
set(TQ_GEN_DIR ${CMAKE_BINARY_DIR}/generated)
file(MAKE_DIRECTORY ${TQ_GEN_DIR})

# tq_string_rc(<strings.txt> <out.rc> [COMPLETE]): a resource script with the table;
# COMPLETE requires exactly the English IDs (every shipped language).
function(tq_string_rc src out)
  set(check)
  if(ARGV2 STREQUAL "COMPLETE")
    set(check --complete-as ${TQ_STRINGS_DIR}/EN.txt)
  endif()
  add_custom_command(OUTPUT ${out}
    COMMAND ${Python3_EXECUTABLE} ${TQ_GEN_STRINGS} rc ${src} ${out} ${check}
    DEPENDS ${src} ${TQ_GEN_STRINGS} ${TQ_STRINGS_DIR}/EN.txt
    COMMENT "Generating ${out}")
endfunction()

# tq_add_language_library(<target> <code> <strings.txt> <output-folder> [COMPLETE]):
# "<folder>/<code>/ColorSettingTool_<code>.dll", resource-only, no imports, no entry point.
function(tq_add_language_library target code src outdir)
  set(rc ${TQ_GEN_DIR}/strings_${target}.rc)
  tq_string_rc(${src} ${rc} ${ARGV4})
  add_library(${target} SHARED ${rc})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ColorSettingTool_${code} PREFIX "" LINKER_LANGUAGE C
    RUNTIME_OUTPUT_DIRECTORY ${outdir}/${code})
  target_link_options(${target} PRIVATE -nostdlib -Wl,--entry=0)
endfunction()

file(GLOB TQ_LANGUAGE_FILES CONFIGURE_DEPENDS ${TQ_STRINGS_DIR}/*.txt)
