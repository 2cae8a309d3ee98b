# Fails when a GStreamer or GLib object is released by hand instead of by its holder: GstHandle
# for reference-counted objects, g_autoptr / g_autofree for the rest (platform/av/GstHandle.h).
# Run as: cmake -DSOURCE_DIR=... -P CheckOwnership.cmake
cmake_minimum_required(VERSION 3.25)

# References, everywhere; and in the program itself, errors, strings and structures as well.
set(unreferenced "gst_object_unref|gst_caps_unref|gst_buffer_unref|gst_sample_unref")
string(APPEND unreferenced "|gst_message_unref|gst_event_unref|gst_query_unref")
string(APPEND unreferenced "|gst_mini_object_unref|gst_discoverer_info_unref|g_object_unref")
set(freed "${unreferenced}|g_error_free|g_clear_error|g_free|gst_structure_free")

file(GLOB_RECURSE sources RELATIVE "${SOURCE_DIR}"
     "${SOURCE_DIR}/*.cpp" "${SOURCE_DIR}/*.h")
# The holder itself.
list(FILTER sources EXCLUDE REGEX "^build[^/]*/")
list(REMOVE_ITEM sources "platform/av/GstHandle.h")

set(problems "")
foreach(source IN LISTS sources)
    set(released "${freed}")
    if(source MATCHES "^(tests|bench)/")
        set(released "${unreferenced}")
    endif()
    file(STRINGS "${SOURCE_DIR}/${source}" lines REGEX "(^|[^_A-Za-z0-9])(${released})\\(")
    foreach(line IN LISTS lines)
        string(STRIP "${line}" line)
        string(APPEND problems "\n  ${source}: ${line}")
    endforeach()
endforeach()
if(problems)
    message(FATAL_ERROR "Released by hand, not by a GstHandle or g_autoptr:${problems}")
endif()
list(LENGTH sources count)
message(STATUS "${count} files hold their GStreamer and GLib objects in handles")
