#ifndef CIMREPO_MOFERROR_H
#define CIMREPO_MOFERROR_H

#include <stdexcept>
#include <string>

namespace cimrepo
{

/// A MOF text that cannot be compiled. what() reads "file:line: message", where the message of a
/// syntax error begins with "expected", so editors and CI logs can jump to the spot.
class MofError : public std::exception
{
public:
    MofError(const std::string& file, int line, const std::string& message)
        : _file(file), _line(line), _message(message),
          _what(file + ":" + std::to_string(line) + ": " + message)
    {
    }

    const std::string& file() const
    {
        return _file;
    }

    int line() const
    {
        return _line;
    }

    /// The message without the "file:line: " prefix.
    const std::string& message() const
    {
        return _message;
    }

    const char* what() const noexcept override
    {
        return _what.c_str();
    }

private:
    std::string _file;
    int _line;
    std::string _message;
    std::string _what;
};

} // namespace cimrepo

#endif
