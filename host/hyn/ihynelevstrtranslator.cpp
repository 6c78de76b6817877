#include "ihynelevstrtranslator.h"

// Out of line: anchors the virtual table in the host library.
IHynElevStrTranslator::~IHynElevStrTranslator() = default;
