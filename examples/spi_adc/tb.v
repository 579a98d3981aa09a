`timescale 1ns / 1ns
// Plays a converter whose eight channels hold eight points of a slow sine-like swing, one step
// further at each round.
module tb;
    localparam PERIOD = 10;             // ns, a 100 MHz clock

    reg  clk = 1'b0;
    reg  rst = 1'b1;
    reg  miso = 1'b0;
    wire cs_n, sclk, mosi, alarm;

    top dut (.clk(clk), .rst(rst), .cs_n(cs_n), .sclk(sclk), .mosi(mosi), .miso(miso),
             .alarm(alarm));

    always #(PERIOD / 2) clk = ~clk;

    // A triangle with its corners rounded off by a shift of its slope.
    function [11:0] level(input [7:0] angle);
        reg [11:0] ramp;
        begin
            ramp  = angle[7] ? {~angle[6:0], 5'd0} : {angle[6:0], 5'd0};
            level = ramp - (ramp >> 4) + {7'd0, angle[4:0]};
        end
    endfunction

    integer   bits = 0;
    reg [3:0] command = 4'd0;
    reg [11:0] answer = 12'd0;
    reg [7:0] angle = 8'd0;

    always @(posedge sclk) begin
        if (bits < 4)
            command = {command[2:0], mosi};
        bits = bits + 1;
        if (bits == 4) begin
            answer = level(angle + {command[2:0], 5'd0});
            angle  = angle + 8'd3;
        end
    end
    always @(negedge sclk) begin
        if (bits >= 4) begin
            #3 miso = answer[11];       // off the clock edge, as a line is
            answer = {answer[10:0], 1'b0};
        end
    end
    always @(posedge cs_n) begin
        bits = 0;
        #3 miso = 1'b0;
    end

    initial begin
        $dumpfile("spi_adc.vcd");
        $dumpvars(0, tb);
        #(PERIOD * 4 + 3) rst = 1'b0;
        #(PERIOD * 6000);
        $finish;
    end
endmodule
