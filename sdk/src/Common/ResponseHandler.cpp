#include <Pegasus/Common/ResponseHandler.h>

PEGASUS_NAMESPACE_BEGIN

ResponseHandler::ResponseHandler()
{
}

ResponseHandler::ResponseHandler(const ResponseHandler& handler) : _context(handler._context)
{
}

ResponseHandler& ResponseHandler::operator=(const ResponseHandler& handler)
{
    _context = handler._context;
    return *this;
}

ResponseHandler::~ResponseHandler()
{
}

void ResponseHandler::setContext(const OperationContext& context)
{
    _context = context;
}

OperationContext ResponseHandler::getContext() const
{
    return _context;
}

PEGASUS_NAMESPACE_END
