keo_add_fuzz(fuzz_stimulus SOURCES fuzz_stimulus.cpp LINK sim::board)
