#include "UserStore.h"

#include <crypt.h>
#include <fcntl.h>
#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace orvhost
{

namespace
{
const std::chrono::seconds verifiedLifetime(60);
const size_t maxUserNameLength = 64;

bool _constantTimeEqual(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
    {
        return false;
    }
    unsigned char diff = 0;
    for (size_t i = 0; i < a.size(); ++i)
    {
        diff |= static_cast<unsigned char>(a[i] ^ b[i]);
    }
    return diff == 0;
}
} // namespace

UserStore::UserStore(std::string path) : _path(std::move(path))
{
    unsigned char key[32];
    if (gnutls_rnd(GNUTLS_RND_KEY, key, sizeof(key)) != 0)
    {
        throw UserStoreError("cannot get random bytes for the credential cache");
    }
    _cacheKey.assign(reinterpret_cast<char*>(key), sizeof(key));
    _decoyHash = hashPassword(std::string(reinterpret_cast<char*>(key), 16));
}

bool UserStore::isValidUserName(const std::string& user)
{
    if (user.empty() || user.size() > maxUserNameLength)
    {
        return false;
    }
    for (unsigned char c : user)
    {
        if (!(isalnum(c) || c == '_' || c == '-' || c == '.' || c == '@'))
        {
            return false;
        }
    }
    return true;
}

std::string UserStore::hashPassword(const std::string& password)
{
    char saltBuf[CRYPT_GENSALT_OUTPUT_SIZE];
    // yescrypt is libcrypt's preferred method; sha512crypt is the fallback
    // for a libcrypt built without it.
    const char* salt = crypt_gensalt_rn("$y$", 0, nullptr, 0, saltBuf, sizeof(saltBuf));
    if (salt == nullptr)
    {
        salt = crypt_gensalt_rn("$6$", 0, nullptr, 0, saltBuf, sizeof(saltBuf));
    }
    if (salt == nullptr)
    {
        throw UserStoreError(std::string("cannot make a password salt: ") + strerror(errno));
    }
    auto data = std::make_unique<crypt_data>();
    memset(data.get(), 0, sizeof(crypt_data));
    const char* hash = crypt_rn(password.c_str(), salt, data.get(), sizeof(crypt_data));
    if (hash == nullptr || hash[0] == '*')
    {
        throw UserStoreError("cannot hash the password");
    }
    return hash;
}

bool UserStore::verifyHash(const std::string& password, const std::string& hash)
{
    if (hash.empty() || hash[0] != '$')
    {
        return false;
    }
    auto data = std::make_unique<crypt_data>();
    memset(data.get(), 0, sizeof(crypt_data));
    const char* computed = crypt_rn(password.c_str(), hash.c_str(), data.get(), sizeof(crypt_data));
    if (computed == nullptr || computed[0] == '*')
    {
        return false;
    }
    return _constantTimeEqual(computed, hash);
}

void UserStore::_parse(const std::string& text)
{
    std::map<std::string, std::string> hashes;
    std::istringstream in(text);
    std::string line;
    int lineNo = 0;
    while (std::getline(in, line))
    {
        ++lineNo;
        if (!line.empty() && line.back() == '\r')
        {
            line.pop_back();
        }
        if (line.empty() || line[0] == '#')
        {
            continue;
        }
        size_t colon = line.find(':');
        std::string name = line.substr(0, colon);
        if (colon == std::string::npos || !isValidUserName(name) || line.size() == colon + 1 ||
            line[colon + 1] != '$')
        {
            throw UserStoreError(_path + ":" + std::to_string(lineNo) +
                                 ": expected \"name:hash\" with a crypt hash");
        }
        hashes[name] = line.substr(colon + 1);
    }
    _hashes.swap(hashes);
    _verified.clear();
}

void UserStore::load()
{
    std::lock_guard<std::mutex> lock(_mutex);
    struct stat st;
    if (stat(_path.c_str(), &st) != 0)
    {
        if (errno != ENOENT)
        {
            throw UserStoreError("cannot read " + _path + ": " + strerror(errno));
        }
        _hashes.clear();
        _verified.clear();
        _mtimeNs = 0;
        _size = -1;
        return;
    }
    std::ifstream in(_path, std::ios::binary);
    if (!in)
    {
        throw UserStoreError("cannot read " + _path + ": " + strerror(errno));
    }
    std::ostringstream text;
    text << in.rdbuf();
    _parse(text.str());
    _mtimeNs = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    _size = st.st_size;
}

void UserStore::_reloadIfChanged()
{
    struct stat st;
    long long mtime = 0;
    long long size = -1;
    if (stat(_path.c_str(), &st) == 0)
    {
        mtime = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
        size = st.st_size;
    }
    if (mtime == _mtimeNs && size == _size)
    {
        return;
    }
    std::ifstream in(_path, std::ios::binary);
    std::ostringstream text;
    if (in)
    {
        text << in.rdbuf();
    }
    try
    {
        _parse(text.str());
    }
    catch (const UserStoreError&)
    {
        // A half-written or damaged file must not lock everybody out nor let
        // anybody in: keep the accounts we had.
        return;
    }
    _mtimeNs = mtime;
    _size = size;
}

std::string UserStore::_digest(const std::string& user, const std::string& password) const
{
    std::string data = user;
    data.push_back('\0');
    data += password;
    unsigned char out[32];
    gnutls_hmac_fast(GNUTLS_MAC_SHA256, _cacheKey.data(), _cacheKey.size(), data.data(),
                     data.size(), out);
    return std::string(reinterpret_cast<char*>(out), sizeof(out));
}

bool UserStore::authenticate(const std::string& user, const std::string& password)
{
    std::string hash;
    std::string digest = _digest(user, password);
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _reloadIfChanged();
        auto it = _hashes.find(user);
        if (it != _hashes.end())
        {
            hash = it->second;
        }
    }
    if (hash.empty())
    {
        // Spend the same slow hash as for a real account, so that response
        // times do not tell which user names exist.
        verifyHash(password, _decoyHash);
        return false;
    }
    {
        std::lock_guard<std::mutex> lock(_mutex);
        auto cached = _verified.find(user);
        if (cached != _verified.end() && cached->second.expires > std::chrono::steady_clock::now())
        {
            if (_constantTimeEqual(cached->second.digest, digest))
            {
                return true;
            }
        }
    }
    // The slow part runs unlocked so that one login does not stall the others.
    if (!verifyHash(password, hash))
    {
        return false;
    }
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _hashes.find(user);
    if (it != _hashes.end() && it->second == hash)
    {
        _verified[user] = CacheEntry{digest, std::chrono::steady_clock::now() + verifiedLifetime};
    }
    return true;
}

void UserStore::setPassword(const std::string& user, const std::string& password)
{
    if (!isValidUserName(user))
    {
        throw UserStoreError("invalid user name \"" + user +
                             "\": use letters, digits and _ - . @ (at most 64)");
    }
    if (password.empty())
    {
        throw UserStoreError("the password must not be empty");
    }
    std::string hash = hashPassword(password);
    std::lock_guard<std::mutex> lock(_mutex);
    _hashes[user] = hash;
    _verified.erase(user);
}

bool UserStore::removeUser(const std::string& user)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _verified.erase(user);
    return _hashes.erase(user) > 0;
}

bool UserStore::hasUser(const std::string& user) const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _hashes.count(user) > 0;
}

std::vector<std::string> UserStore::userNames() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    std::vector<std::string> names;
    for (const auto& entry : _hashes)
    {
        names.push_back(entry.first);
    }
    return names;
}

void UserStore::save() const
{
    std::string text = "# orv-cimserver users: name:salted-hash; edit with orv-cimuser\n";
    {
        std::lock_guard<std::mutex> lock(_mutex);
        for (const auto& entry : _hashes)
        {
            text += entry.first + ":" + entry.second + "\n";
        }
    }
    std::string tmp = _path + ".tmp." + std::to_string(getpid());
    int fd = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (fd < 0)
    {
        throw UserStoreError("cannot write " + tmp + ": " + strerror(errno));
    }
    size_t done = 0;
    while (done < text.size())
    {
        ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            int err = errno;
            close(fd);
            unlink(tmp.c_str());
            throw UserStoreError("cannot write " + tmp + ": " + strerror(err));
        }
        done += static_cast<size_t>(n);
    }
    if (fsync(fd) != 0 || close(fd) != 0)
    {
        unlink(tmp.c_str());
        throw UserStoreError("cannot write " + tmp + ": " + strerror(errno));
    }
    if (rename(tmp.c_str(), _path.c_str()) != 0)
    {
        int err = errno;
        unlink(tmp.c_str());
        throw UserStoreError("cannot replace " + _path + ": " + strerror(err));
    }
}

} // namespace orvhost
