#ifndef ORV_HOST_USERSTORE_H
#define ORV_HOST_USERSTORE_H

#include <chrono>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvhost
{

/// Thrown for a users file that cannot be read or written, or a bad name.
class UserStoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The server's user accounts: one "name:hash" line per user, where the hash
/// is a salted yescrypt (or sha512crypt) string made by libcrypt. Plain-text
/// passwords are never stored. The file is re-read when it changes on disk, so
/// accounts edited with orv-cimuser take effect without a restart.
class UserStore
{
public:
    explicit UserStore(std::string path);

    /// Reads the file; a missing file is an empty store. Throws UserStoreError.
    void load();

    /// True when the name exists and the password matches its hash.
    bool authenticate(const std::string& user, const std::string& password);

    /// Adds the user or changes the password. Throws UserStoreError.
    void setPassword(const std::string& user, const std::string& password);
    /// Answers false when the user did not exist.
    bool removeUser(const std::string& user);
    /// Writes the file atomically with mode 0600.
    void save() const;

    std::vector<std::string> userNames() const;
    bool hasUser(const std::string& user) const;
    const std::string& path() const
    {
        return _path;
    }

    /// Salted slow hash of a password, as stored in the file.
    static std::string hashPassword(const std::string& password);
    /// Checks a password against a stored hash in constant time.
    static bool verifyHash(const std::string& password, const std::string& hash);
    /// Names are what HTTP Basic can carry and the file can hold.
    static bool isValidUserName(const std::string& user);

private:
    void _reloadIfChanged();
    void _parse(const std::string& text);

    std::string _path;
    mutable std::mutex _mutex;
    std::map<std::string, std::string> _hashes;
    long long _mtimeNs = -1;
    long long _size = -1;
    // Slow hashes cost tens of milliseconds; a client sending the same Basic
    // credentials on every request is served from this cache of keyed
    // digests (never the password itself) for a short while.
    struct CacheEntry
    {
        std::string digest;
        std::chrono::steady_clock::time_point expires;
    };
    std::map<std::string, CacheEntry> _verified;
    std::string _cacheKey;
    std::string _decoyHash; ///< checked for unknown users
    std::string _digest(const std::string& user, const std::string& password) const;
};

} // namespace orvhost

#endif
