option(ORV_PRECOMPILED "Precompile headers of the standard library, to build faster" OFF)

# orv_precompile(<targets...>) precompiles headers for the targets if ORV_PRECOMPILED is ON. It is OFF
# in the preset gcc, so that a missing #include fails there.
function(orv_precompile)
    if(ORV_PRECOMPILED)
        foreach(target ${ARGN})
            target_precompile_headers(${target} PRIVATE
                <algorithm> <atomic> <chrono> <condition_variable> <filesystem> <functional> <map>
                <memory> <mutex> <optional> <string> <string_view> <thread> <vector>)
        endforeach()
    endif()
endfunction()
