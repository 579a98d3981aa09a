// Reads one 12-bit conversion in 16 clocks of SCLK: a start bit and the channel go out, then the
// converter answers, most significant bit first. SCLK runs at a quarter of the clock.
module spi_master (
    input  wire        clk,
    input  wire        rst,
    input  wire        start,
    input  wire [2:0]  channel,
    output reg         cs_n,
    output reg         sclk,
    output reg         mosi,
    input  wire        miso,
    output reg  [11:0] value,
    output reg         done
);
    reg [3:0]  bit_count;
    reg [1:0]  phase;
    reg [3:0]  out_shift;
    reg [11:0] in_shift;

    always @(posedge clk) begin
        done <= 1'b0;
        if (rst) begin
            cs_n      <= 1'b1;
            sclk      <= 1'b0;
            mosi      <= 1'b0;
            bit_count <= 4'd0;
            phase     <= 2'd0;
            value     <= 12'd0;
            in_shift  <= 12'd0;
            out_shift <= 4'd0;
        end else if (cs_n) begin
            sclk <= 1'b0;
            if (start) begin
                cs_n      <= 1'b0;
                bit_count <= 4'd0;
                phase     <= 2'd0;
                out_shift <= {1'b1, channel};
            end
        end else begin
            phase <= phase + 2'd1;
            case (phase)
                2'd0: {mosi, out_shift} <= {out_shift, 1'b0};
                2'd1: sclk <= 1'b1;
                2'd2: in_shift <= {in_shift[10:0], miso};
                2'd3: begin
                    sclk      <= 1'b0;
                    bit_count <= bit_count + 4'd1;
                    if (bit_count == 4'd15) begin
                        cs_n  <= 1'b1;
                        value <= in_shift;
                        done  <= 1'b1;
                    end
                end
            endcase
        end
    end
endmodule
