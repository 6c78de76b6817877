#include "itovsimpleexprparsertranstokener.h"

ITovSimpleExprParserTransTokener::~ITovSimpleExprParserTransTokener() = default;
