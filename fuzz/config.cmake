keo_add_fuzz(fuzz_config SOURCES fuzz_config.cpp LINK keo::config)
target_include_directories(fuzz_config PRIVATE ${PROJECT_SOURCE_DIR}/tests)
