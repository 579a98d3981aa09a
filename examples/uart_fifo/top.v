// The design under analysis: bytes from the line wait in the FIFO until the reader takes them.
module top (
    input  wire       clk,
    input  wire       rst,
    input  wire       rx,
    input  wire       rd_en,
    output wire [7:0] rd_data,
    output wire       empty
);
    wire [7:0] rx_data;
    wire       rx_valid;
    wire [4:0] fifo_count;
    wire       full;
    wire       overrun;

    uart_rx #(.DIVIDER(8)) u_rx (
        .clk(clk), .rst(rst), .rx(rx), .data(rx_data), .valid(rx_valid));

    fifo u_fifo (
        .clk(clk), .rst(rst), .wr_en(rx_valid), .wr_data(rx_data), .rd_en(rd_en),
        .rd_data(rd_data), .count(fifo_count), .empty(empty), .full(full), .overrun(overrun));
endmodule
