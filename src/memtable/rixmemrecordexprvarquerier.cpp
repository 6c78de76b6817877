#include "rixmemrecordexprvarquerier.h"

RixMemRecordExprVarQuerier::~RixMemRecordExprVarQuerier() = default;
