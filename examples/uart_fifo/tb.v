`timescale 1ns / 1ns
// Plays a terminal that types lines and a reader that empties the FIFO in bursts. The reader pauses
// in the third line, so that the FIFO fills up and overruns once.
module tb;
    localparam PERIOD = 20;             // ns, a 50 MHz clock
    localparam BIT    = 8 * PERIOD;

    reg clk = 1'b0;
    reg rst = 1'b1;
    reg rx  = 1'b1;
    reg rd_en = 1'b0;
    reg reader_on = 1'b1;
    wire [7:0] rd_data;
    wire       empty;

    top dut (.clk(clk), .rst(rst), .rx(rx), .rd_en(rd_en), .rd_data(rd_data), .empty(empty));

    always #(PERIOD / 2) clk = ~clk;

    task send_byte(input [7:0] value);
        integer i;
        begin
            rx = 1'b0;
            #(BIT);
            for (i = 0; i < 8; i = i + 1) begin
                rx = value[i];
                #(BIT);
            end
            rx = 1'b1;
            #(BIT);
        end
    endtask

    task send_line(input [8 * 10 - 1:0] text);  // ten characters, then CR and LF
        integer i;
        begin
            for (i = 9; i >= 0; i = i - 1)
                send_byte(text[8 * i +: 8]);
            send_byte(8'h0d);
            send_byte(8'h0a);
        end
    endtask

    // The reader waits for six bytes or for a quiet line, then takes all there is.
    integer quiet = 0;
    always @(posedge clk) begin
        quiet <= (dut.rx_valid || empty) ? 0 : quiet + 1;
        if (!reader_on || empty)
            rd_en <= 1'b0;
        else if (dut.fifo_count >= 6 || quiet > 200)
            rd_en <= 1'b1;
    end

    initial begin
        $dumpfile("uart_fifo.vcd");
        $dumpvars(0, tb);
        #(PERIOD * 4 + 3) rst = 1'b0;   // off the clock edge, as a line is
        #(PERIOD * 60);
        send_line("HELLO FPGA");
        #(PERIOD * 400);
        send_line("HELLO FIFO");
        #(PERIOD * 700);
        reader_on = 1'b0;
        send_line("ABCDEFGHIJ");
        send_byte("1");
        send_byte("2");
        send_byte("3");
        send_byte("4");
        send_byte("5");                 // the seventeenth byte finds the FIFO full
        #(PERIOD * 100);
        reader_on = 1'b1;
        #(PERIOD * 300);
        send_line("HELLO FPGA");
        #(PERIOD * 900);
        send_line("0123456789");
        #(PERIOD * 600);
        $finish;
    end
endmodule
