#include "itovsqliterecord.h"

ITovSqliteRecord::~ITovSqliteRecord() = default;
