# Small libraries and hosts that tests load or start. They land beside the test programs.

file(GLOB fixture_files CONFIGURE_DEPENDS fixtures/*.c fixtures/*.cpp)
