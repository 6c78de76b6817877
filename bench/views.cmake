# The views benchmark runs the same queries in SQLite's in-memory database.
find_package(SQLite3 REQUIRED)
target_link_libraries(bench_views PRIVATE SQLite::SQLite3)
