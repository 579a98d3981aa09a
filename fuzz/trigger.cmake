keo_add_fuzz(fuzz_expression SOURCES fuzz_expression.cpp LINK keo::trigger)
target_include_directories(fuzz_expression PRIVATE ${PROJECT_SOURCE_DIR}/tests)
