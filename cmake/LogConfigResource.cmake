# korvalin_add_log_config_resource(<target> <ini file>)
# Builds the INI file into the target as the resource "KorvalinLogConfig" of type
# "INI": the logger reads it when neither the working folder, nor the main program's
# folder, nor the file that KORVALIN_LOG_CONFIG names has a configuration.
function(korvalin_add_log_config_resource target file)
    get_filename_component(absolute "${file}" ABSOLUTE)
    set(rc ${CMAKE_CURRENT_BINARY_DIR}/${target}_log_config.rc)
    file(GENERATE OUTPUT ${rc} CONTENT "KorvalinLogConfig INI \"${absolute}\"\n")
    target_sources(${target} PRIVATE ${rc})
    set_property(SOURCE ${rc} APPEND PROPERTY OBJECT_DEPENDS ${absolute})
endfunction()
