#ifndef Pegasus_MessageLoader_h
#define Pegasus_MessageLoader_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Formatter.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// A message identifier with its default text and arguments. No message
// catalogs are installed, so the default text is always the one used.
class PEGASUS_COMMON_LINKAGE MessageLoaderParms
{
public:
    String msg_id;
    String default_msg;
    Formatter::Arg arg0;
    Formatter::Arg arg1;
    Formatter::Arg arg2;
    Formatter::Arg arg3;
    Formatter::Arg arg4;
    Formatter::Arg arg5;
    Formatter::Arg arg6;
    Formatter::Arg arg7;
    Formatter::Arg arg8;
    Formatter::Arg arg9;

    MessageLoaderParms();
    MessageLoaderParms(const String& id, const String& msg);
    MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& a0);
    MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& a0,
                       const Formatter::Arg& a1);
    MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& a0,
                       const Formatter::Arg& a1, const Formatter::Arg& a2);
    MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& a0,
                       const Formatter::Arg& a1, const Formatter::Arg& a2,
                       const Formatter::Arg& a3);
    MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& a0,
                       const Formatter::Arg& a1, const Formatter::Arg& a2, const Formatter::Arg& a3,
                       const Formatter::Arg& a4);
    MessageLoaderParms(const char* id, const char* msg);
    MessageLoaderParms(const char* id, const char* msg, const String& a0);
    MessageLoaderParms(const char* id, const char* msg, const String& a0, const String& a1);

    String toString() const;
};

class PEGASUS_COMMON_LINKAGE MessageLoader
{
public:
    static String getMessage(MessageLoaderParms& parms);
};

PEGASUS_NAMESPACE_END

#endif
