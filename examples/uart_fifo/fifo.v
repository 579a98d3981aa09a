// FIFO of 16 bytes. A write into the full FIFO is lost and shows as one clock of `overrun`.
module fifo (
    input  wire       clk,
    input  wire       rst,
    input  wire       wr_en,
    input  wire [7:0] wr_data,
    input  wire       rd_en,
    output wire [7:0] rd_data,
    output reg  [4:0] count,
    output wire       empty,
    output wire       full,
    output reg        overrun
);
    reg [7:0] memory [0:15];
    reg [3:0] head, tail;

    assign empty   = (count == 5'd0);
    assign full    = (count == 5'd16);
    assign rd_data = memory[tail];

    wire do_write = wr_en && !full;
    wire do_read  = rd_en && !empty;

    always @(posedge clk) begin
        if (rst) begin
            head    <= 4'd0;
            tail    <= 4'd0;
            count   <= 5'd0;
            overrun <= 1'b0;
        end else begin
            overrun <= wr_en && full;
            if (do_write) begin
                memory[head] <= wr_data;
                head         <= head + 4'd1;
            end
            if (do_read)
                tail <= tail + 4'd1;
            count <= count + {4'd0, do_write} - {4'd0, do_read};
        end
    end
endmodule
