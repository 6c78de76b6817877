#include "rukevents.h"

// Out-of-line destructors anchor the vtables in this library.
IRukQueryVarDataTypeEvent::~IRukQueryVarDataTypeEvent() = default;
IRukQueryVarValueEvent::~IRukQueryVarValueEvent() = default;
IRukQueryConstValueEvent::~IRukQueryConstValueEvent() = default;
IRukQueryFunctionEvent::~IRukQueryFunctionEvent() = default;
IRukVisitNodeEvent::~IRukVisitNodeEvent() = default;
IRukTransTokenEvent::~IRukTransTokenEvent() = default;
RukQueryVarDataTypeImpl::~RukQueryVarDataTypeImpl() = default;
RukQueryVarValueImpl::~RukQueryVarValueImpl() = default;
RukVisitNodeImpl::~RukVisitNodeImpl() = default;
RukTransTokenImpl::~RukTransTokenImpl() = default;
