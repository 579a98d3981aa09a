keo_add_fuzz(fuzz_stimulus SOURCES fuzz_stimulus.cpp LINK sim::board)
keo_add_fuzz(fuzz_boardfile SOURCES fuzz_boardfile.cpp LINK sim::board)
keo_add_fuzz(fuzz_transcript SOURCES fuzz_transcript.cpp LINK sim::board)
