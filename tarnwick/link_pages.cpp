#include "link_pages.h"

#include "page_reply.h"
#include "page_template.h"
#include "readable_time.h"
#include "schema.h"

namespace tarnwick {

namespace {

struct Outcome
{
    int status;
    std::string title;
    std::string text;
};

// The form for typing a code, with a notice above it unless the notice is empty.
HttpReply codeForm(const Visit& visit, int status, const std::string& typed, const std::string& notice)
{
    const std::string noticeHtml = notice.empty() ? "" : renderTemplate("notice", {{"text", notice}});
    const std::string content = renderTemplate("link_code", {{"notice", noticeHtml}, {"code", typed}});
    return pageReply(visit, status, "Link a desktop", content);
}

HttpReply confirmation(const Visit& visit, const LinkCode& code)
{
    const std::string content = renderTemplate("link_confirm", {{"code", code.code},
                                                                {"device", code.deviceId},
                                                                {"left", readableDuration(code.left)},
                                                                {"form_token", visit.formToken.value}});
    return pageReply(visit, 200, "Approve this desktop?", content);
}

HttpReply outcomePage(const Visit& visit, const Outcome& outcome)
{
    const std::string content = renderTemplate("link_outcome", {{"title", outcome.title}, {"text", outcome.text}});
    return pageReply(visit, outcome.status, outcome.title, content);
}

Outcome settledOutcome(const LinkCode& code)
{
    switch (code.state) {
    case LinkCodeState::Approved:
        return {200, "Desktop approved", "Go back to the Tarnwick app. It finishes linking within a few seconds."};
    case LinkCodeState::Used:
        return {200, "Desktop linked", "This code has done its work: the desktop is linked to your account."};
    case LinkCodeState::Denied:
        return {200, "Request denied", "The desktop was not linked. Its code cannot be used any more."};
    case LinkCodeState::Replaced:
        return {410, "A newer code exists", "The app has made a newer code. Use the one it shows now."};
    default:
        return {410, "This code has expired", "Codes are good for 10 minutes. Generate a new one in the app."};
    }
}

HttpReply unknownCode(const Visit& visit, const std::string& typed)
{
    return codeForm(visit, 404, typed, "There is no such code. Compare it with the one in the app.");
}

// A second decision changes nothing, and its sender has to learn that it was not the one that counted.
HttpReply alreadyDecided(const Visit& visit, const LinkCode& code)
{
    Outcome outcome = settledOutcome(code);
    if (outcome.status == 200) {
        outcome = {409, "Already decided", "This code had been approved or denied before. Nothing was changed."};
    }
    return outcomePage(visit, outcome);
}

} // namespace

HttpReply showLinkPage(Visit& visit)
{
    const std::string typed = visit.form.value("code");
    if (typed.empty()) {
        return codeForm(visit, 200, "", "");
    }
    const auto code = visit.storage.codes.find(normaliseLinkCode(typed));
    if (!code) {
        return unknownCode(visit, typed);
    }
    return code->state == LinkCodeState::Pending ? confirmation(visit, *code)
                                                 : outcomePage(visit, settledOutcome(*code));
}

HttpReply decideLink(Visit& visit)
{
    const std::string typed = visit.form.value("code");
    const auto code = visit.storage.codes.find(normaliseLinkCode(typed));
    if (!code) {
        return unknownCode(visit, typed);
    }
    const std::string decision = visit.form.value("decision");
    if (decision != "approve" && decision != "deny") {
        return errorPage(422, "No decision", "Choose Approve or Deny on the pairing page.");
    }
    const LinkDecision wanted = decision == "approve" ? LinkDecision::Approve : LinkDecision::Deny;
    if (!visit.storage.codes.decide(code->code, wanted, ownerAccountId)) {
        return alreadyDecided(visit, *visit.storage.codes.find(code->code));
    }
    return redirectReply("/link/pc?code=" + code->code);
}

} // namespace tarnwick
