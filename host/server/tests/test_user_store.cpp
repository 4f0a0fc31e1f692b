#include "UserStore.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <thread>

using namespace orvhost;

namespace
{
std::string _tempPath(const char* name)
{
    std::string dir = testing::TempDir() + "userstore_" + std::to_string(getpid());
    mkdir(dir.c_str(), 0700);
    std::string path = dir + "/" + name;
    unlink(path.c_str());
    return path;
}

void _write(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::trunc) << text;
}
} // namespace

TEST(UserStore, HashesAreSaltedAndVerifyOnlyTheirPassword)
{
    std::string a = UserStore::hashPassword("s3cret");
    std::string b = UserStore::hashPassword("s3cret");
    EXPECT_NE(a, b) << "two hashes of one password must differ by salt";
    EXPECT_EQ(a.find("s3cret"), std::string::npos);
    EXPECT_TRUE(UserStore::verifyHash("s3cret", a));
    EXPECT_TRUE(UserStore::verifyHash("s3cret", b));
    EXPECT_FALSE(UserStore::verifyHash("s3cret ", a));
    EXPECT_FALSE(UserStore::verifyHash("", a));
    EXPECT_FALSE(UserStore::verifyHash("s3cret", "s3cret")) << "plain text is never a hash";
    EXPECT_FALSE(UserStore::verifyHash("s3cret", ""));
}

TEST(UserStore, UserNames)
{
    struct Case
    {
        const char* name;
        bool valid;
    } cases[] = {{"demo", true},         {"ops.admin@site", true}, {"a_b-c", true},
                 {"", false},            {"has space", false},     {"colon:name", false},
                 {"new\nline", false},   {"ünï", false},
                 {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", false}};
    for (const Case& c : cases)
    {
        EXPECT_EQ(UserStore::isValidUserName(c.name), c.valid) << c.name;
    }
}

TEST(UserStore, SaveLoadAuthenticateAndRemove)
{
    std::string path = _tempPath("users");
    {
        UserStore store(path);
        store.load(); // a missing file is an empty store
        EXPECT_TRUE(store.userNames().empty());
        store.setPassword("demo", "demo-pw");
        store.setPassword("admin", "admin-pw");
        store.save();
        EXPECT_THROW(store.setPassword("bad name", "x"), UserStoreError);
        EXPECT_THROW(store.setPassword("empty", ""), UserStoreError);
    }
    struct stat st;
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    std::ifstream in(path);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text.find("demo-pw"), std::string::npos);

    UserStore store(path);
    store.load();
    EXPECT_EQ(store.userNames(), (std::vector<std::string>{"admin", "demo"}));
    EXPECT_TRUE(store.authenticate("demo", "demo-pw"));
    EXPECT_TRUE(store.authenticate("demo", "demo-pw")) << "second time from the cache";
    EXPECT_FALSE(store.authenticate("demo", "admin-pw"));
    EXPECT_FALSE(store.authenticate("nobody", "demo-pw"));
    EXPECT_FALSE(store.authenticate("", ""));

    // A removed user is refused at once, even with cached credentials.
    EXPECT_TRUE(store.removeUser("demo"));
    EXPECT_FALSE(store.removeUser("demo"));
    EXPECT_FALSE(store.authenticate("demo", "demo-pw"));
}

TEST(UserStore, PicksUpChangesOnDiskAndSurvivesDamage)
{
    std::string path = _tempPath("users-live");
    UserStore server(path);
    server.load();
    EXPECT_FALSE(server.authenticate("late", "pw1"));

    UserStore tool(path);
    tool.load();
    tool.setPassword("late", "pw1");
    tool.save();
    EXPECT_TRUE(server.authenticate("late", "pw1")) << "a user added by the tool is seen";

    tool.setPassword("late", "pw2");
    tool.save();
    EXPECT_FALSE(server.authenticate("late", "pw1")) << "a changed password drops the cache";
    EXPECT_TRUE(server.authenticate("late", "pw2"));

    // A damaged file keeps the accounts that were loaded.
    _write(path, "late:plaintext-password\ngarbage line\n");
    EXPECT_TRUE(server.authenticate("late", "pw2"));
    EXPECT_FALSE(server.authenticate("late", "plaintext-password"));

    UserStore fresh(path);
    EXPECT_THROW(fresh.load(), UserStoreError) << "a damaged file is refused at start";
}

TEST(UserStore, ConcurrentLoginsAgree)
{
    std::string path = _tempPath("users-mt");
    UserStore store(path);
    store.setPassword("demo", "pw");
    store.save();
    store.load();
    std::vector<std::thread> threads;
    std::atomic<int> good{0}, bad{0};
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 3; ++i)
            {
                (store.authenticate("demo", t % 2 ? "pw" : "wrong") ? good : bad)++;
            }
        });
    }
    for (auto& t : threads)
    {
        t.join();
    }
    EXPECT_EQ(good.load(), 6);
    EXPECT_EQ(bad.load(), 6);
}
