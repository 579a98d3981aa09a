// UART receiver, 8 data bits, no parity, one stop bit. `valid` is high for one clock with each byte.
module uart_rx #(
    parameter DIVIDER = 8               // clocks per bit, at least 4
) (
    input  wire       clk,
    input  wire       rst,
    input  wire       rx,
    output reg  [7:0] data,
    output reg        valid
);
    localparam IDLE = 2'd0, START = 2'd1, BITS = 2'd2, STOP = 2'd3;

    reg [1:0] state;
    reg [7:0] shift;
    reg [2:0] bit_index;
    reg [7:0] ticks;
    reg       rx_meta, rx_sync;         // the line is not in step with the clock

    wire tick_done = (ticks == 0);

    always @(posedge clk) begin
        {rx_sync, rx_meta} <= {rx_meta, rx};
        valid <= 1'b0;
        if (rst) begin
            state     <= IDLE;
            rx_meta   <= 1'b1;
            rx_sync   <= 1'b1;
            data      <= 8'd0;
            shift     <= 8'd0;
            bit_index <= 3'd0;
            ticks     <= 8'd0;
        end else begin
            if (!tick_done)
                ticks <= ticks - 8'd1;
            case (state)
                IDLE: if (!rx_sync) begin
                    state <= START;
                    ticks <= DIVIDER / 2 - 1;   // to the middle of the start bit
                end
                START: if (tick_done) begin
                    state     <= rx_sync ? IDLE : BITS;
                    bit_index <= 3'd0;
                    ticks     <= DIVIDER - 1;
                end
                BITS: if (tick_done) begin
                    shift     <= {rx_sync, shift[7:1]};
                    bit_index <= bit_index + 3'd1;
                    ticks     <= DIVIDER - 1;
                    if (bit_index == 3'd7)
                        state <= STOP;
                end
                STOP: if (tick_done) begin
                    state <= IDLE;
                    if (rx_sync) begin
                        data  <= shift;
                        valid <= 1'b1;
                    end
                end
            endcase
        end
    end
endmodule
