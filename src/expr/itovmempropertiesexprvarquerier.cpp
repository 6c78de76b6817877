#include "itovmempropertiesexprvarquerier.h"

ITovMemPropertiesExprVarQuerier::~ITovMemPropertiesExprVarQuerier() = default;
