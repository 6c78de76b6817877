#include "ihynproperty.h"

// Out of line: anchors the virtual table in the host library.
IHynProperty::~IHynProperty() = default;
