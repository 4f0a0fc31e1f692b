#include "TlsCredentials.h"

#include <fcntl.h>
#include <gnutls/gnutls.h>
#include <gnutls/crypto.h>
#include <gnutls/x509.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>

namespace orvhost
{

namespace
{
const unsigned rsaBits = 3072;
const time_t validity = 10L * 365 * 24 * 3600;

void _check(int rc, const char* what)
{
    if (rc < 0)
    {
        throw TlsError(std::string(what) + ": " + gnutls_strerror(rc));
    }
}

bool _readFile(const std::string& path, std::string& out)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
    {
        return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    out = text.str();
    return true;
}

void _writeFile(const std::string& path, const std::string& data, mode_t mode)
{
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
    if (fd < 0)
    {
        throw TlsError("cannot create " + path + ": " + strerror(errno));
    }
    bool ok = write(fd, data.data(), data.size()) == static_cast<ssize_t>(data.size());
    ok = (close(fd) == 0) && ok;
    if (!ok)
    {
        unlink(path.c_str());
        throw TlsError("cannot write " + path);
    }
}

std::string _export(gnutls_datum_t& datum)
{
    std::string out(reinterpret_cast<char*>(datum.data), datum.size);
    gnutls_free(datum.data);
    return out;
}

bool _exists(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}
} // namespace

TlsCredentials loadTlsCredentials(const std::string& certPath, const std::string& keyPath)
{
    TlsCredentials creds;
    if (!_readFile(certPath, creds.certPem))
    {
        throw TlsError("cannot read certificate " + certPath + ": " + strerror(errno));
    }
    if (!_readFile(keyPath, creds.keyPem))
    {
        throw TlsError("cannot read private key " + keyPath + ": " + strerror(errno));
    }
    // Parse both now so a broken pair stops the start-up with a clear message
    // instead of failing every handshake later.
    gnutls_certificate_credentials_t check;
    _check(gnutls_certificate_allocate_credentials(&check), "TLS credentials");
    gnutls_datum_t cert = {reinterpret_cast<unsigned char*>(creds.certPem.data()),
                           static_cast<unsigned>(creds.certPem.size())};
    gnutls_datum_t key = {reinterpret_cast<unsigned char*>(creds.keyPem.data()),
                          static_cast<unsigned>(creds.keyPem.size())};
    int rc = gnutls_certificate_set_x509_key_mem(check, &cert, &key, GNUTLS_X509_FMT_PEM);
    gnutls_certificate_free_credentials(check);
    if (rc < 0)
    {
        throw TlsError("certificate " + certPath + " and key " + keyPath +
                       " do not form a usable pair: " + gnutls_strerror(rc));
    }
    return creds;
}

TlsCredentials makeSelfSigned(const std::string& commonName)
{
    gnutls_x509_privkey_t key = nullptr;
    gnutls_x509_crt_t crt = nullptr;
    TlsCredentials creds;
    try
    {
        _check(gnutls_x509_privkey_init(&key), "key");
        _check(gnutls_x509_privkey_generate(key, GNUTLS_PK_RSA, rsaBits, 0), "key generation");
        _check(gnutls_x509_crt_init(&crt), "certificate");
        _check(gnutls_x509_crt_set_version(crt, 3), "certificate version");
        unsigned char serial[16];
        _check(gnutls_rnd(GNUTLS_RND_NONCE, serial, sizeof(serial)), "serial");
        serial[0] &= 0x7f;
        _check(gnutls_x509_crt_set_serial(crt, serial, sizeof(serial)), "serial");
        time_t now = time(nullptr);
        _check(gnutls_x509_crt_set_activation_time(crt, now - 3600), "activation time");
        _check(gnutls_x509_crt_set_expiration_time(crt, now + validity), "expiration time");
        _check(gnutls_x509_crt_set_dn_by_oid(crt, GNUTLS_OID_X520_COMMON_NAME, 0,
                                             commonName.data(),
                                             static_cast<unsigned>(commonName.size())),
               "common name");
        const char org[] = "orv-cimserver self-signed";
        _check(gnutls_x509_crt_set_dn_by_oid(crt, GNUTLS_OID_X520_ORGANIZATION_NAME, 0, org,
                                             sizeof(org) - 1),
               "organization");
        _check(gnutls_x509_crt_set_subject_alt_name(crt, GNUTLS_SAN_DNSNAME, commonName.data(),
                                                    static_cast<unsigned>(commonName.size()),
                                                    GNUTLS_FSAN_SET),
               "subject alternative name");
        if (commonName != "localhost")
        {
            _check(gnutls_x509_crt_set_subject_alt_name(crt, GNUTLS_SAN_DNSNAME, "localhost", 9,
                                                        GNUTLS_FSAN_APPEND),
                   "subject alternative name");
        }
        const unsigned char loopback[4] = {127, 0, 0, 1};
        _check(gnutls_x509_crt_set_subject_alt_name(crt, GNUTLS_SAN_IPADDRESS, loopback, 4,
                                                    GNUTLS_FSAN_APPEND),
               "subject alternative name");
        _check(gnutls_x509_crt_set_basic_constraints(crt, 0, -1), "constraints");
        _check(gnutls_x509_crt_set_key_usage(crt, GNUTLS_KEY_DIGITAL_SIGNATURE |
                                                      GNUTLS_KEY_KEY_ENCIPHERMENT),
               "key usage");
        _check(gnutls_x509_crt_set_key_purpose_oid(crt, GNUTLS_KP_TLS_WWW_SERVER, 0),
               "key purpose");
        _check(gnutls_x509_crt_set_key(crt, key), "public key");
        _check(gnutls_x509_crt_sign2(crt, crt, key, GNUTLS_DIG_SHA256, 0), "signature");

        gnutls_datum_t out;
        _check(gnutls_x509_crt_export2(crt, GNUTLS_X509_FMT_PEM, &out), "certificate export");
        creds.certPem = _export(out);
        _check(gnutls_x509_privkey_export2(key, GNUTLS_X509_FMT_PEM, &out), "key export");
        creds.keyPem = _export(out);
    }
    catch (const TlsError&)
    {
        if (crt != nullptr)
        {
            gnutls_x509_crt_deinit(crt);
        }
        if (key != nullptr)
        {
            gnutls_x509_privkey_deinit(key);
        }
        throw;
    }
    gnutls_x509_crt_deinit(crt);
    gnutls_x509_privkey_deinit(key);
    return creds;
}

TlsCredentials loadOrCreateTlsCredentials(const std::string& certPath, const std::string& keyPath,
                                          const std::string& commonName, bool* created)
{
    if (created != nullptr)
    {
        *created = false;
    }
    bool haveCert = _exists(certPath);
    bool haveKey = _exists(keyPath);
    if (haveCert || haveKey)
    {
        // Half a pair is a damaged state; replacing it silently could hide
        // a lost key, so stop and say so.
        return loadTlsCredentials(certPath, keyPath);
    }
    TlsCredentials creds = makeSelfSigned(commonName);
    _writeFile(keyPath, creds.keyPem, 0600);
    _writeFile(certPath, creds.certPem, 0644);
    if (created != nullptr)
    {
        *created = true;
    }
    return creds;
}

} // namespace orvhost
