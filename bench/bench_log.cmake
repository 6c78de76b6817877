# bench_log: the raw peer inserts through SQLite's C API; the log system reads TovLog.ini beside
# the program, so one is written there with logging and every level on.
find_package(SQLite3 REQUIRED)
target_link_libraries(bench_log PRIVATE SQLite::SQLite3)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/TovLog.ini
  "[Options]\nOpenLog=true\n\n[LogLevel]\nDebug=true\nInfo=true\nWarning=true\nError=true\n")
