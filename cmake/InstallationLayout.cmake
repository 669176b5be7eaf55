# Where the programs find their tools and data: by paths relative to their own folder, so that an
# installation can be moved. The build tree has the layout of an installation, and one rule serves
# both.
foreach(folder LIBEXEC DATA)
    file(RELATIVE_PATH SPINDRIFT_${folder}_FROM_BIN
        ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_${folder}DIR}/spindrift)
    cmake_path(SET in_build_tree NORMALIZE
        ${CMAKE_BINARY_DIR}/bin/${SPINDRIFT_${folder}_FROM_BIN})
    cmake_path(IS_PREFIX CMAKE_BINARY_DIR ${in_build_tree} NORMALIZE is_inside)
    if(NOT is_inside)
        message(FATAL_ERROR "CMAKE_INSTALL_${folder}DIR must be in the folder that holds "
            "CMAKE_INSTALL_BINDIR (${CMAKE_INSTALL_FULL_BINDIR}), not "
            "${CMAKE_INSTALL_FULL_${folder}DIR}.")
    endif()
    set(SPINDRIFT_${folder}_IN_BUILD_TREE ${in_build_tree})
endforeach()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(SPINDRIFT_TOOL_ROOT_DIR ${SPINDRIFT_LIBEXEC_IN_BUILD_TREE})
set(SPINDRIFT_DATA_DIR ${SPINDRIFT_DATA_IN_BUILD_TREE})
