#include "ihynmodel.h"

// Out of line: anchors the virtual table in the host library.
IHynModel::~IHynModel() = default;
