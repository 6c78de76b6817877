# bench_graph measures the searcher beside the literal reference kept with the tests.
if(TARGET bench_graph)
  target_include_directories(bench_graph PRIVATE ${CMAKE_SOURCE_DIR}/tests/graph)
endif()
