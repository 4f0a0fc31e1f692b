#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/SSLContext.h>

PEGASUS_NAMESPACE_BEGIN

class SSLContextRep
{
public:
    String trustStore;
    String certPath;
    String keyPath;
};

namespace
{
SSLContextRep* _makeRep(const String& trustStore, const String& certPath, const String& keyPath,
                        SSLCertificateVerifyFunction* verifyCert)
{
    if (verifyCert != 0)
    {
        throw SSLException("certificate verification callbacks are not supported; "
                           "give a trust store instead");
    }
    SSLContextRep* rep = new SSLContextRep;
    rep->trustStore = trustStore;
    rep->certPath = certPath;
    rep->keyPath = keyPath;
    return rep;
}
} // namespace

SSLContext::SSLContext(const String& trustStore, SSLCertificateVerifyFunction* verifyCert,
                       const String&)
    : _rep(_makeRep(trustStore, String(), String(), verifyCert))
{
}

SSLContext::SSLContext(const String& trustStore, const String& certPath, const String& keyPath,
                       SSLCertificateVerifyFunction* verifyCert, const String&)
    : _rep(_makeRep(trustStore, certPath, keyPath, verifyCert))
{
}

SSLContext::SSLContext(const SSLContext& sslContext) : _rep(new SSLContextRep(*sslContext._rep))
{
}

SSLContext::~SSLContext()
{
    delete _rep;
}

String SSLContext::getTrustStore() const
{
    return _rep->trustStore;
}

String SSLContext::getCertPath() const
{
    return _rep->certPath;
}

String SSLContext::getKeyPath() const
{
    return _rep->keyPath;
}

PEGASUS_NAMESPACE_END
