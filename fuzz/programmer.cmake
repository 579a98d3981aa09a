foreach(target fuzz_devicedatabase fuzz_tooltext)
    keo_add_fuzz(${target} SOURCES ${target}.cpp LINK keo::programmer)
endforeach()
