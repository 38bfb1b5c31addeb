# Installs npm packages by lock file, once for all builds of this checkout.

set(ORV_NPM_FOLDER ${PROJECT_SOURCE_DIR}/build/npm CACHE PATH "Where npm packages are kept")

# orv_npm(<result> <directory>) installs the packages in the directory's package-lock.json. `result`
# is the node_modules directory, or false after a warning when the packages are not available.
function(orv_npm result folder)
    set(${result} FALSE PARENT_SCOPE)
    file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${folder})
    find_program(NPM npm)
    if(NOT NPM)
        message(WARNING "npm is missing, so ${name} is left out: install the Debian packages nodejs npm")
        return()
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${folder}/package-lock.json)
    set(target ${ORV_NPM_FOLDER}/${name})
    file(SHA256 ${folder}/package-lock.json wanted)
    set(installed)
    if(EXISTS ${target}/installed)
        file(READ ${target}/installed installed)
    endif()
    if(NOT installed STREQUAL wanted)
        file(COPY ${folder}/package.json ${folder}/package-lock.json ${folder}/.npmrc
            DESTINATION ${target})
        execute_process(COMMAND ${NPM} ci --ignore-scripts --silent
            WORKING_DIRECTORY ${target} RESULT_VARIABLE failed)
        if(failed)
            message(WARNING "npm cannot fetch the packages of ${name}, so it is left out: "
                "check the connection to the registry, then configure again")
            return()
        endif()
        file(WRITE ${target}/installed ${wanted})
    endif()
    set(${result} ${target}/node_modules PARENT_SCOPE)
endfunction()
