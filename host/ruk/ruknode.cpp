#include "ruknode.h"

#include "rukparser_p.h"

#include <type_traits>

static_assert(std::is_standard_layout<RukVarState>::value, "a variable handle shares its state's address");

int RukNode::nodeType() const
{
    return d->type;
}

QString RukNode::token() const
{
    return d->owner->tokenText(*d);
}

int RukNode::position() const
{
    return d->start + 1;
}

void RukVarNode::setAsVariant(const QVariant &value)
{
    if (!value.isValid() || value.isNull()) {
        state().invalid = true;
        return;
    }
    state().value.setVariant(value);
}
