#include "service_under_test.h"

#include "database.h"
#include "secrets.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace tarnwick::testing {

namespace {

class Persistence : public ::testing::Test
{
protected:
    Persistence()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "tarnwick-test-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        m_file = (m_folder / "service.db").string();
    }

    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::string fileBytes() const
    {
        std::ostringstream bytes;
        bytes << std::ifstream(m_file, std::ios::binary).rdbuf();
        return bytes.str();
    }

    std::filesystem::path m_folder;
    std::string m_file;
};

TEST_F(Persistence, RestartKeepsLinksAndProjects)
{
    std::string token;
    nlohmann::json before;
    {
        const ServiceUnderTest service(m_file);
        token = service.linkDesktop("desktop");
        ASSERT_EQ(statusOf(service.post("/api/pc/instances/create", {{"display_name", "Kept"}}, token)), 201);
        before = jsonOf(service.get("/api/pc/instances", token));
    }

    const ServiceUnderTest service(m_file);
    const auto after = jsonOf(service.get("/api/pc/instances", token));

    ASSERT_EQ(after["instances"].size(), 3U);
    for (std::size_t index = 0; index < 3; ++index) {
        for (const char* key : {"slug", "display_name", "status", "core_label", "description", "tags"}) {
            EXPECT_EQ(after["instances"][index][key], before["instances"][index][key]);
        }
    }
}

TEST_F(Persistence, RestartKeepsAPendingCodeAndItsAge)
{
    std::string code;
    {
        const ServiceUnderTest service(m_file);
        code = service.startLink("desktop");
    }

    ServiceUnderTest service(m_file);
    service.advance(std::chrono::minutes(9));
    EXPECT_EQ(messageOf(service.poll(code, "desktop")),
              "Waiting for approval. Code " + code + " is good for another 1 minute.");
    service.advance(std::chrono::minutes(1));
    EXPECT_EQ(statusOf(service.poll(code, "desktop")), 410);
}

TEST_F(Persistence, DeletedSeedDoesNotComeBack)
{
    {
        const ServiceUnderTest service(m_file);
        ASSERT_EQ(statusOf(service.browser().post("/gdps/neon-burst/delete", {{"confirm", "yes"}})), 303);
    }

    EXPECT_EQ(statusOf(ServiceUnderTest(m_file).get("/gdps/neon-burst")), 404);
}

TEST_F(Persistence, RevokedStaysRevoked)
{
    std::string token;
    {
        const ServiceUnderTest service(m_file);
        token = service.linkDesktop("desktop");
        ASSERT_EQ(statusOf(service.browser().post("/desktops/1/revoke", {})), 303);
    }

    EXPECT_EQ(messageOf(ServiceUnderTest(m_file).get("/api/pc/me", token)),
              "The link of this desktop was revoked. Link it again.");
}

TEST_F(Persistence, FileHoldsTheHashOfATokenAndNotTheToken)
{
    std::string token;
    {
        const ServiceUnderTest service(m_file);
        token = service.linkDesktop("desktop");
    }

    EXPECT_FALSE(contains(fileBytes(), token));
    EXPECT_TRUE(contains(fileBytes(), sha256Hex(token)));
}

TEST_F(Persistence, HashIsSha256)
{
    EXPECT_EQ(sha256Hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST_F(Persistence, FileOfAnotherProgramIsLeftAlone)
{
    Database(m_file).execute("CREATE TABLE notes (text TEXT)");

    EXPECT_THROW(Service{m_file}, DatabaseError);
    {
        Database database(m_file);
        EXPECT_NO_THROW(database.query("SELECT text FROM notes"));
    }

    std::ofstream(m_file, std::ios::trunc) << std::string(4096, 'x');
    EXPECT_THROW(Service{m_file}, DatabaseError);
}

TEST_F(Persistence, UncommittedChangesAreUndone)
{
    Database database(m_file);
    database.execute("CREATE TABLE notes (text TEXT)");
    {
        const Transaction transaction(database);
        database.run("INSERT INTO notes VALUES (?)", "lost");
    }

    Statement count = database.query("SELECT count(*) FROM notes");
    ASSERT_TRUE(count.step());
    EXPECT_EQ(count.integer(0), 0);
}

} // namespace

} // namespace tarnwick::testing
