// The design under analysis: reads the channels of a converter in turn, with a pause between two.
module top (
    input  wire       clk,
    input  wire       rst,
    output wire       cs_n,
    output wire       sclk,
    output wire       mosi,
    input  wire       miso,
    output reg        alarm
);
    reg  [2:0]  channel;
    reg  [5:0]  pause;
    wire        start = cs_n && pause == 6'd0;
    wire [11:0] value;
    wire        done;

    spi_master u_spi (
        .clk(clk), .rst(rst), .start(start), .channel(channel), .cs_n(cs_n), .sclk(sclk),
        .mosi(mosi), .miso(miso), .value(value), .done(done));

    always @(posedge clk) begin
        if (rst) begin
            channel <= 3'd0;
            pause   <= 6'd20;
            alarm   <= 1'b0;
        end else if (done) begin
            channel <= channel + 3'd1;
            pause   <= 6'd20;
            alarm   <= value >= 12'hC00;
        end else if (pause != 6'd0)
            pause <= pause - 6'd1;
    end
endmodule
