keo_add_fuzz(fuzz_packet SOURCES fuzz_packet.cpp LINK keo::link)
