// The headers that every test includes are compiled once, here: see tests/CMakeLists.txt.
