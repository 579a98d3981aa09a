keo_add_fuzz(fuzz_datafile SOURCES fuzz_datafile.cpp LINK keo::project)
keo_add_fuzz(fuzz_projectfile SOURCES fuzz_projectfile.cpp LINK keo::project)
