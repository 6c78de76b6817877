#include "ihynelementdrawobj.h"

// Out of line: anchors the virtual table in the host library.
IHynElementDrawObj::~IHynElementDrawObj() = default;
