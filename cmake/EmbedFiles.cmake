# zmf_embed_files(<target> FUNCTION <name> FILES <file>...)
# Compiles the files into <target> and defines
#   std::string_view <name>(std::string_view fileName);
# which returns a file's bytes by its base name (empty view if unknown).
function(zmf_embed_files target)
  cmake_parse_arguments(ARG "" "FUNCTION" "FILES" ${ARGN})
  set(out ${CMAKE_CURRENT_BINARY_DIR}/${target}_${ARG_FUNCTION}_embedded.cpp)
  set(abs_files)
  foreach(f ${ARG_FILES})
    get_filename_component(a ${f} ABSOLUTE)
    list(APPEND abs_files ${a})
  endforeach()
  add_custom_command(
    OUTPUT ${out}
    COMMAND ${CMAKE_COMMAND} -DOUT=${out} -DFUNCTION=${ARG_FUNCTION}
            "-DFILES=${abs_files}" -P ${CMAKE_SOURCE_DIR}/cmake/EmbedFilesScript.cmake
    DEPENDS ${abs_files} ${CMAKE_SOURCE_DIR}/cmake/EmbedFilesScript.cmake
    COMMENT "Embedding ${ARG_FUNCTION}"
    VERBATIM)
  target_sources(${target} PRIVATE ${out})
endfunction()
