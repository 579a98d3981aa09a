# keo_write_example_board(FILE FOLDER): the example's board file, to stand beside the simulated
# servers and the simulated programmer as FILE, where they find it without being told. FOLDER is
# where the example stands, absolute or seen from there.
function(keo_write_example_board file folder)
    set(board ${PROJECT_SOURCE_DIR}/examples/uart_fifo/board.json)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${board})
    file(READ ${board} text)
    string(REPLACE "\"uart_fifo." "\"${folder}/uart_fifo." text "${text}")
    file(CONFIGURE OUTPUT ${file} CONTENT "${text}" @ONLY)
endfunction()
