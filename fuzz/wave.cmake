keo_add_fuzz(fuzz_window SOURCES fuzz_window.cpp LINK keo::export)
