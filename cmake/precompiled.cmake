option(ORV_PRECOMPILED "Precompile headers of the standard library to save a third of the time" OFF)

# orv_precompile(<targets...>) does nothing unless ORV_PRECOMPILED is set. The preset gcc does not
# set it, so a missing #include fails there.
function(orv_precompile)
    if(ORV_PRECOMPILED)
        foreach(target ${ARGN})
            target_precompile_headers(${target} PRIVATE
                <algorithm> <atomic> <chrono> <condition_variable> <filesystem> <functional> <map>
                <memory> <mutex> <optional> <string> <string_view> <thread> <vector>)
        endforeach()
    endif()
endfunction()
