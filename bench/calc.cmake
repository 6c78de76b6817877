# The calc benchmark runs the record-expression view's query in SQLite's in-memory database.
find_package(SQLite3 REQUIRED)
target_link_libraries(bench_calc PRIVATE SQLite::SQLite3)
