#include "service.h"

#include "service_under_test.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <random>

namespace tarnwick::testing {

namespace {

HttpRequest request(const std::string& method, const std::string& path)
{
    return {method, path, "", {{"Host", "localhost"}}, ""};
}

TEST(Service, FaultInsideBecomesAnErrorReply)
{
    std::string pattern = (std::filesystem::temp_directory_path() / "tarnwick-test-XXXXXX").string();
    const std::filesystem::path folder = mkdtemp(pattern.data());
    Service service((folder / "service.db").string());
    Database((folder / "service.db").string()).execute("DROP TABLE instances");

    const HttpReply page = service.handle(request("GET", "/recent"));
    EXPECT_EQ(page.status, 500);
    EXPECT_TRUE(contains(page.body, "Tarnwick could not finish the request. Try again later."));
    EXPECT_FALSE(contains(page.body, "instances")) << "the cause is for the log, not for visitors";
    EXPECT_EQ(service.handle(request("GET", "/link/pc")).status, 200);
    std::filesystem::remove_all(folder);
}

TEST(Service, AnswersNothingMoreOnceClosed)
{
    Service service(":memory:");
    service.close();

    const HttpReply reply = service.handle(request("GET", "/api/pc/me"));

    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(reply.body, "{\"message\":\"Tarnwick is shutting down.\"}");
}

// Requests put together at random from pieces that mean something and from any bytes, the same on every run.
class RandomRequests
{
public:
    HttpRequest next()
    {
        HttpRequest made{pick(m_methods), pick(m_paths), text(), {{"Host", "localhost"}}, text()};
        made.headers.emplace_back("Content-Type", "application/x-www-form-urlencoded");
        made.headers.emplace_back("Authorization", "Bearer " + text());
        made.headers.emplace_back("Cookie", "tarnwick_form=" + std::string(64, 'a'));
        if (number(3) == 0) {
            made.path += text();
        }
        return made;
    }

private:
    template <std::size_t size>
    std::string pick(const std::array<const char*, size>& choices)
    {
        return choices.at(number(size));
    }

    std::size_t number(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random); }

    std::string text()
    {
        std::string made = number(2) == 0 ? "form_token=" + std::string(64, 'a') + "&" : "";
        for (std::size_t count = number(12); count > 0; --count) {
            made += number(4) == 0 ? std::string(1, static_cast<char>(number(256))) : pick(m_pieces);
        }
        return made;
    }

    static constexpr std::array m_methods = {"GET", "POST", "HEAD", "PUT", ""};
    static constexpr std::array m_paths = {"/",
                                           "/link/pc",
                                           "/api/pc/link/start",
                                           "/api/pc/link/poll",
                                           "/api/pc/me",
                                           "/api/pc/instances/create",
                                           "/gdps/neon-burst",
                                           "/gdps/neon-burst/status",
                                           "/gdps/",
                                           "/desktops/1/revoke"};
    static constexpr std::array m_pieces = {"code=",
                                            "device_id=",
                                            "display_name=",
                                            "decision=approve",
                                            "status=online",
                                            "&",
                                            "=",
                                            "%",
                                            "%41",
                                            "%F0%9F%94%A5",
                                            "TWPC-",
                                            "AB2CD3",
                                            "+",
                                            "<script>",
                                            "%00",
                                            "%ff",
                                            "{{text}}",
                                            "'",
                                            "\"",
                                            "../"};
    std::mt19937 m_random{20260102};
};

TEST(Service, AnswersWhateverIsSent)
{
    Service service(":memory:");
    RandomRequests requests;
    for (int count = 0; count < 4000; ++count) {
        const HttpRequest sent = requests.next();

        const HttpReply reply = service.handle(sent);

        EXPECT_GE(reply.status, 200);
        EXPECT_LT(reply.status, 500) << sent.method << " " << sent.path << "?" << sent.query << "\n" << sent.body;
        EXPECT_FALSE(contains(reply.body, "<script")) << sent.path << "?" << sent.query;
        for (const auto& [name, value] : reply.headers) {
            EXPECT_EQ(value.find_first_of("\r\n"), std::string::npos) << name;
        }
    }
}

} // namespace

} // namespace tarnwick::testing
