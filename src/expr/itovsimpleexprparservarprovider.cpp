#include "itovsimpleexprparservarprovider.h"

ITovSimpleExprParserVarProvider::~ITovSimpleExprParserVarProvider() = default;
