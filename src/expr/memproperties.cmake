# Property sets whose values may be expressions, calculated through the onCalcExprVal signal.
tov_add_sources(TovGeneralUtility
  HEADERS tovmempropertyexprstate.h tovmempropertyexprcalcargs.h tovmemproperty.h tovmemproperties.h
  SOURCES tovmemproperty.cpp tovmemproperties.cpp tovmemproperties_p.h)
