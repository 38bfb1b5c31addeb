# Appends the ZIP's files for CMake and pkg-config, orv.ps1, licences and documents to `entries`.

set(packaged ${PROJECT_BINARY_DIR}/packaging)
foreach(name quelvixwinlib quelvixwinlib-simulated)
    list(APPEND entries lib/pkgconfig/${name}.pc=${packaged}/${name}.pc)
endforeach()
list(APPEND entries
    lib/cmake/quelvixwinlib/quelvixwinlib-config.cmake=${PROJECT_SOURCE_DIR}/packaging/windows-config.cmake
    lib/cmake/quelvixwinlib/quelvixwinlib-config-version.cmake=${packaged}/quelvixwinlib-config-version.cmake
    THIRD_PARTY_NOTICES.txt=${ORV_NOTICES}
    LICENSE=${PROJECT_SOURCE_DIR}/LICENSE
    orv.ps1=${PROJECT_SOURCE_DIR}/packaging/orv.ps1)
file(GLOB documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*)
foreach(document ${documents})
    get_filename_component(name ${document} NAME)
    list(APPEND entries docs/${name}=${document})
endforeach()
list(REMOVE_DUPLICATES entries)
set_property(GLOBAL PROPERTY ORV_ZIP_ENTRIES ${entries})
