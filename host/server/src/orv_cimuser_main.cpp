// orv-cimuser: adds, changes, removes and lists the accounts of orv-cimserver.

#include "StatePaths.h"
#include "UserStore.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

using namespace orvhost;

namespace
{
const char usage[] =
    "usage: orv-cimuser [--users FILE] COMMAND [NAME] [--password-stdin]\n"
    "commands:\n"
    "  add NAME      add a user (fails if it exists)\n"
    "  passwd NAME   change a user's password (fails if it does not exist)\n"
    "  set NAME      add the user or change its password\n"
    "  remove NAME   remove a user\n"
    "  list          print the user names\n"
    "The password is asked twice on a terminal, or read as one line from\n"
    "standard input with --password-stdin or when input is not a terminal.\n"
    "Default users file: $ORV_CIMSERVER_STATE_DIR/users, else\n"
    "<directory of this program>/../var/orv-cimserver/users.\n";

std::string _readLine(FILE* in)
{
    std::string line;
    int c;
    while ((c = fgetc(in)) != EOF && c != '\n')
    {
        line.push_back(static_cast<char>(c));
    }
    if (!line.empty() && line.back() == '\r')
    {
        line.pop_back();
    }
    return line;
}

std::string _askHidden(const char* prompt)
{
    fputs(prompt, stderr);
    fflush(stderr);
    termios old;
    bool tty = tcgetattr(STDIN_FILENO, &old) == 0;
    if (tty)
    {
        termios quiet = old;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    std::string line = _readLine(stdin);
    if (tty)
    {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &old);
        fputs("\n", stderr);
    }
    return line;
}

std::string _password(bool fromStdin)
{
    if (fromStdin || !isatty(STDIN_FILENO))
    {
        return _readLine(stdin);
    }
    std::string first = _askHidden("New password: ");
    std::string second = _askHidden("Repeat password: ");
    if (first != second)
    {
        throw UserStoreError("the passwords differ");
    }
    return first;
}
} // namespace

int main(int argc, char** argv)
{
    std::string usersFile;
    bool passwordStdin = false;
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i)
    {
        std::string arg = argv[i];
        if (arg == "--users" && i + 1 < argc)
        {
            usersFile = argv[++i];
        }
        else if (arg == "--password-stdin")
        {
            passwordStdin = true;
        }
        else if (arg == "--help" || arg == "-h")
        {
            fputs(usage, stdout);
            return 0;
        }
        else if (!arg.empty() && arg[0] == '-')
        {
            fprintf(stderr, "orv-cimuser: unknown option %s\n%s", arg.c_str(), usage);
            return 2;
        }
        else
        {
            words.push_back(arg);
        }
    }
    if (words.empty() || (words[0] == "list" ? words.size() != 1 : words.size() != 2))
    {
        fputs(usage, stderr);
        return 2;
    }
    try
    {
        if (usersFile.empty())
        {
            ensureDirectory(defaultStateDir());
            usersFile = defaultUsersFile();
        }
        UserStore store(usersFile);
        store.load();
        const std::string& command = words[0];
        if (command == "list")
        {
            for (const std::string& name : store.userNames())
            {
                printf("%s\n", name.c_str());
            }
            return 0;
        }
        const std::string& name = words[1];
        if (command == "remove")
        {
            if (!store.removeUser(name))
            {
                fprintf(stderr, "orv-cimuser: no user \"%s\" in %s\n", name.c_str(),
                        usersFile.c_str());
                return 1;
            }
            store.save();
            return 0;
        }
        if (command != "add" && command != "passwd" && command != "set")
        {
            fprintf(stderr, "orv-cimuser: unknown command %s\n%s", command.c_str(), usage);
            return 2;
        }
        if (!UserStore::isValidUserName(name))
        {
            fprintf(stderr,
                    "orv-cimuser: invalid user name \"%s\": use letters, digits and _ - . @\n",
                    name.c_str());
            return 2;
        }
        bool exists = store.hasUser(name);
        if (command == "add" && exists)
        {
            fprintf(stderr, "orv-cimuser: user \"%s\" exists; use passwd or set\n", name.c_str());
            return 1;
        }
        if (command == "passwd" && !exists)
        {
            fprintf(stderr, "orv-cimuser: no user \"%s\"; use add or set\n", name.c_str());
            return 1;
        }
        store.setPassword(name, _password(passwordStdin));
        store.save();
        return 0;
    }
    catch (const std::exception& e)
    {
        fprintf(stderr, "orv-cimuser: %s\n", e.what());
        return 1;
    }
}
