# Views over memory tables and the filter rules applied to them.
tov_add_sources(TovGeneralUtility
  HEADERS rixmemtableview.h rixmemtablefilterrule.h rixmemtablefilterrules.h
  SOURCES rixmemtableview.cpp rixmemtableview_p.h rixmemprefetch_p.h rixmemtablefilterrule.cpp rixmemtablefilterrules.cpp)
