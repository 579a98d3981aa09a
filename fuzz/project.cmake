keo_add_fuzz(fuzz_datafile SOURCES fuzz_datafile.cpp LINK keo::design)
keo_add_fuzz(fuzz_projectfile SOURCES fuzz_projectfile.cpp LINK keo::design)
