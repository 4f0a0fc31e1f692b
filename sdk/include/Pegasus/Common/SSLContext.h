#ifndef Pegasus_SSLContext_h
#define Pegasus_SSLContext_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class SSLCertificateInfo;
class SSLContextRep;

typedef Boolean(SSLCertificateVerifyFunction)(SSLCertificateInfo& certInfo);

// The TLS settings of a client connection. A trust store (a PEM file of CA
// certificates, or a directory of them) turns on verification of the
// server's certificate; without one the server is not verified. This subset
// cannot call a verification callback: giving one throws SSLException.
class PEGASUS_COMMON_LINKAGE SSLContext
{
public:
    SSLContext(const String& trustStore, SSLCertificateVerifyFunction* verifyCert,
               const String& randomFile = String::EMPTY);

    // With a client certificate and its key (PEM files).
    SSLContext(const String& trustStore, const String& certPath, const String& keyPath,
               SSLCertificateVerifyFunction* verifyCert, const String& randomFile);

    SSLContext(const SSLContext& sslContext);
    ~SSLContext();

    String getTrustStore() const;
    String getCertPath() const;
    String getKeyPath() const;

private:
    SSLContext();
    SSLContext& operator=(const SSLContext&);

    SSLContextRep* _rep;
};

PEGASUS_NAMESPACE_END

#endif
