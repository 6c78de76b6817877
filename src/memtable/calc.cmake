# Record expressions and field constraint checks over the expression engine.
tov_add_sources(TovGeneralUtility
  HEADERS rixmemrecordexprparser.h rixmemfieldconstraintcheckparser.h rixmemrecordexprvarquerier.h
  SOURCES rixmemrecordexprparser.cpp rixmemfieldconstraintcheckparser.cpp rixmemrecordexprvarquerier.cpp
          rixmemexprtypes_p.h)
