# Hosts that live among faults, for a minute; by hand for as long as one likes, see faults.py.
add_executable(life faults/JumpingClock.cpp faults/life.cpp)
target_include_directories(life PRIVATE "${tests_view}")
target_link_libraries(life PRIVATE quenwick_client)
quenwick_program(life)
# Kilobytes. Sanitizers keep what was freed, and notes about all memory.
set(growth 4096)
if(QUENWICK_SANITIZE MATCHES "address")
  set(growth 1000000)
elseif(QUENWICK_SANITIZE)
  set(growth 200000)
endif()
add_test(NAME FaultsTest.NothingIsLostInventedOrSentTwice
  COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/faults/faults.py" 60 "$<TARGET_FILE:life>"
          "$<TARGET_FILE:quenwick-sandbox>" --growth ${growth})
set_tests_properties(FaultsTest.NothingIsLostInventedOrSentTwice PROPERTIES TIMEOUT 400)
