# The expression parser over property sets, with "@" arguments and an outside querier.
tov_add_sources(TovGeneralUtility
  HEADERS tovmempropertiesexprparser.h itovmempropertiesexprvarquerier.h
  SOURCES tovmempropertiesexprparser.cpp itovmempropertiesexprvarquerier.cpp)
