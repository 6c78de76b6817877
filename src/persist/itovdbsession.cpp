#include "itovdbsession.h"

ITovDBSession::~ITovDBSession() = default;
