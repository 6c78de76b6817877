#include "ruknode.h"

#include "rukparser_p.h"

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
        s->invalid = true;
        return;
    }
    s->value.setVariant(value);
}
