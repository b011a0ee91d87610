# Makes korvale::platform the platform layer in a file of a host's. `-l:` takes that by its name, with or without a number
# at the end and with or without a soname of its own. Programs are linked to it themselves, as the library does not know
# where it is; those made from here on find it where it is now until they are installed.
macro(use_host_layer file)
    get_filename_component(korvale_layer_name "${file}" NAME)
    get_filename_component(korvale_layer_folder "${file}" ABSOLUTE)
    get_filename_component(korvale_layer_folder "${korvale_layer_folder}" DIRECTORY)
    set_target_properties(korvale::platform PROPERTIES
        INTERFACE_LINK_LIBRARIES "-Wl,--push-state,--no-as-needed,-l:${korvale_layer_name},--pop-state"
        INTERFACE_LINK_DIRECTORIES "${korvale_layer_folder}")
    list(APPEND CMAKE_BUILD_RPATH "${korvale_layer_folder}")
endmacro()
