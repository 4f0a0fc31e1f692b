#ifndef ORV_HOST_TLSCREDENTIALS_H
#define ORV_HOST_TLSCREDENTIALS_H

#include <stdexcept>
#include <string>

namespace orvhost
{

struct TlsCredentials
{
    std::string certPem;
    std::string keyPem;
};

class TlsError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads a PEM certificate and key. Throws TlsError when either is missing or
/// they do not parse.
TlsCredentials loadTlsCredentials(const std::string& certPath, const std::string& keyPath);

/// Makes a self-signed RSA certificate for the host name, valid ten years.
TlsCredentials makeSelfSigned(const std::string& commonName);

/// Loads the pair from the two paths, or makes and stores a self-signed pair
/// there (key mode 0600) when neither file exists yet.
TlsCredentials loadOrCreateTlsCredentials(const std::string& certPath, const std::string& keyPath,
                                          const std::string& commonName, bool* created);

} // namespace orvhost

#endif
