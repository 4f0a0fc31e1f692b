#include <Pegasus/Common/MessageLoader.h>

PEGASUS_NAMESPACE_BEGIN

MessageLoaderParms::MessageLoaderParms() {}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg)
    : msg_id(id), default_msg(msg)
{
}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg,
                                       const Formatter::Arg& a0)
    : msg_id(id), default_msg(msg), arg0(a0)
{
}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg,
                                       const Formatter::Arg& a0, const Formatter::Arg& a1)
    : msg_id(id), default_msg(msg), arg0(a0), arg1(a1)
{
}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg,
                                       const Formatter::Arg& a0, const Formatter::Arg& a1,
                                       const Formatter::Arg& a2)
    : msg_id(id), default_msg(msg), arg0(a0), arg1(a1), arg2(a2)
{
}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg,
                                       const Formatter::Arg& a0, const Formatter::Arg& a1,
                                       const Formatter::Arg& a2, const Formatter::Arg& a3)
    : msg_id(id), default_msg(msg), arg0(a0), arg1(a1), arg2(a2), arg3(a3)
{
}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg,
                                       const Formatter::Arg& a0, const Formatter::Arg& a1,
                                       const Formatter::Arg& a2, const Formatter::Arg& a3,
                                       const Formatter::Arg& a4)
    : msg_id(id), default_msg(msg), arg0(a0), arg1(a1), arg2(a2), arg3(a3), arg4(a4)
{
}

MessageLoaderParms::MessageLoaderParms(const char* id, const char* msg)
    : msg_id(id), default_msg(msg)
{
}

MessageLoaderParms::MessageLoaderParms(const char* id, const char* msg, const String& a0)
    : msg_id(id), default_msg(msg), arg0(a0)
{
}

MessageLoaderParms::MessageLoaderParms(const char* id, const char* msg, const String& a0,
                                       const String& a1)
    : msg_id(id), default_msg(msg), arg0(a0), arg1(a1)
{
}

String MessageLoaderParms::toString() const
{
    return Formatter::format(default_msg, arg0, arg1, arg2, arg3, arg4, arg5, arg6, arg7, arg8,
                             arg9);
}

String MessageLoader::getMessage(MessageLoaderParms& parms)
{
    return parms.toString();
}

PEGASUS_NAMESPACE_END
