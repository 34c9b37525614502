// Messages over a real connection, both of whose ends are this process's.

#include <atomic>
#include <optional>

#include "Check.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#import "ListService.h"

namespace Selftest {

namespace {

using namespace InstallCommon;
using Platform::XPCConnection;

/// A service with a list, and one client of it.
struct ListRun {
    ListRun() { client->resume(); }
    ~ListRun() { client->invalidate(); }
    ListRun(const ListRun&) = delete;
    ListRun& operator=(const ListRun&) = delete;

    std::shared_ptr<Events> events = std::make_shared<Events>();
    std::shared_ptr<ListService> service = std::make_shared<ListService>(events);
    std::shared_ptr<Reports> reports = std::make_shared<Reports>();
    std::unique_ptr<Loopback> loopback = makeListLoopback(events, service);
    std::shared_ptr<XPCConnection> client = loopback->makeClient(CreateCommandExecutingXPCInterface());
};

Outcome checkList() {
    ListRun run;
    sendList(*run.client, uninstallCommands(), run.reports);
    if (!run.events->waitFor("list of 75 commands")) {
        return failed("the list did not arrive; what happened: " + run.events->asText());
    }
    const std::vector<std::uint8_t> expected = archiveOf(uninstallCommands());
    if (run.service->archive() != expected) {
        return failed("the list arrived changed: its archive has other bytes");
    }
    return passed("75 commands, " + std::to_string(expected.size()) + " bytes alike");
}

Outcome checkReports() {
    ListRun run;
    std::vector<Report> expected;
    for (const std::unique_ptr<Command>& command : uninstallCommands()) {
        expected.emplace_back(command->commandDescription(), 1);
    }
    sendList(*run.client, uninstallCommands(), run.reports);
    if (!run.reports->waitForCount(expected.size())) {
        return failed(std::to_string(run.reports->all().size()) + " of 75 reports came back; " +
                      run.events->asText());
    }
    return run.reports->all() == expected ? passed("75 reports in order")
                                          : failed("reports came back changed or out of order");
}

Outcome checkSecondList() {
    ListRun run;
    sendList(*run.client, {}, run.reports);
    sendList(*run.client, uninstallCommands(), run.reports);
    if (!run.events->waitFor("list of 75 commands") || !run.reports->waitForCount(75)) {
        return failed(run.events->asText());
    }
    return run.events->all().front() == "list of 0 commands" ? passed()
                                                             : failed("the empty list did not come first");
}

/// Answers the support helper's message with what it was given, or ends the connection instead.
class Installer final : public Platform::XPCObject {
  public:
    enum class Manner : std::uint8_t { replies, endsConnection };

    Installer(Manner manner, std::optional<Platform::Error> answer)
        : manner_(manner), answer_(std::move(answer)) {}

    [[nodiscard]] std::string_view protocolName() const override { return "NVKSupportPrivilegedHelper"; }
    void message(std::string_view /*selector*/, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply reply) override {
        url = std::get<Base::URL>(arguments.at(0)).absoluteString();
        if (manner_ == Manner::replies) {
            reply(answer_);
            return;
        }
        kept_ = std::move(reply);
        connection->invalidate();
    }

    std::shared_ptr<XPCConnection> connection;
    std::string url;

  private:
    Manner manner_;
    std::optional<Platform::Error> answer_;
    Platform::XPCReply kept_;
};

/// What a synchronous call brought.
struct Answer {
    int replies = 0;
    int failures = 0;
    std::optional<Platform::Error> error;
};

Answer install(Platform::XPCConnection& client, const Base::URL& package) {
    const auto answer = std::make_shared<Answer>();
    const std::shared_ptr<Platform::XPCObject> proxy =
        client.synchronousRemoteObjectProxy([answer](const Platform::Error& error) {
            ++answer->failures;
            answer->error = error;
        });
    SupportPrivilegedHelperClient::installPackage.send(*proxy, package,
                                                       [answer](const std::optional<Platform::Error>& error) {
                                                           ++answer->replies;
                                                           answer->error = error;
                                                       });
    return *answer;
}

const Base::URL kPackage = Base::URL::fileURL("/Odd; paths & 100%/\xC3\xBC?b#c.pkg");

Answer installOver(const std::shared_ptr<Installer>& installer) {
    Loopback loopback(std::make_shared<Events>(),
                      [installer](NSXPCConnection*, const std::shared_ptr<XPCConnection>& taken) {
                          installer->connection = taken;
                          taken->setExportedObject(SupportPrivilegedHelperClient::xpcInterface(), installer);
                      });
    const std::shared_ptr<XPCConnection> client =
        loopback.makeClient(SupportPrivilegedHelperClient::xpcInterface());
    client->resume();
    Answer answer = install(*client, kPackage);
    client->invalidate();
    return answer;
}

std::string textOf(const Answer& answer) {
    return std::to_string(answer.replies) + " replies, " + std::to_string(answer.failures) + " failures" +
           (answer.error ? ", \"" + answer.error->description + "\" " + std::to_string(answer.error->code)
                         : "");
}

Outcome checkReply() {
    const auto installer = std::make_shared<Installer>(Installer::Manner::replies, std::nullopt);
    const Answer answer = installOver(installer);
    if (answer.replies != 1 || answer.failures != 0 || answer.error) {
        return failed(textOf(answer));
    }
    return installer->url == kPackage.absoluteString() ? passed()
                                                       : failed("the URL arrived as " + installer->url);
}

Outcome checkReplyWithError() {
    const Platform::Error error{"It could not be installed: \xC3\xBC.", 7};
    const Answer answer = installOver(std::make_shared<Installer>(Installer::Manner::replies, error));
    const bool isRight = answer.replies == 1 && answer.failures == 0 && answer.error == error;
    return isRight ? passed() : failed(textOf(answer));
}

Outcome checkReplyThatNeverComes() {
    const Answer answer =
        installOver(std::make_shared<Installer>(Installer::Manner::endsConnection, std::nullopt));
    const bool isRight = answer.replies == 0 && answer.failures == 1 && answer.error;
    return isRight ? passed("\"" + answer.error->description + "\" " + std::to_string(answer.error->code))
                   : failed(textOf(answer));
}

Outcome checkClientEnds() {
    ListRun run;
    sendList(*run.client, {}, run.reports);
    if (!run.events->waitFor("list of 0 commands")) {
        return failed("the list did not arrive: " + run.events->asText());
    }
    run.client->invalidate();
    for (const char* const event : {"client: invalid", "service: invalid", "service: released"}) {
        if (!run.events->waitFor(event)) {
            return failed("\"" + std::string(event) + "\" did not happen; what did: " + run.events->asText());
        }
    }
    return passed();
}

Outcome checkServiceEnds() {
    const auto events = std::make_shared<Events>();
    const auto service = std::make_shared<ListService>(events);
    std::shared_ptr<XPCConnection> ofService;
    Loopback loopback(events, [&](NSXPCConnection*, const std::shared_ptr<XPCConnection>& taken) {
        ofService = taken;
        taken->setExportedObject(CreateCommandExecutingXPCInterface(), exportedCommandExecuting(service, {}));
    });
    const std::shared_ptr<XPCConnection> client = loopback.makeClient(CreateCommandExecutingXPCInterface());
    client->resume();
    sendList(*client, {}, std::make_shared<Reports>());
    if (!events->waitFor("list of 0 commands")) {
        return failed("the list did not arrive: " + events->asText());
    }
    ofService->invalidate();
    const bool isTold = events->waitForAny({"client: invalid", "client: interrupted"});
    const std::string told = events->has("client: invalid") ? "client: invalid" : "client: interrupted";
    client->invalidate();
    return isTold ? passed("the client hears: " + told)
                  : failed("the client is not told; what happened: " + events->asText());
}

Outcome checkNobodyThere() {
    const auto events = std::make_shared<Events>();
    Loopback loopback(events, [](NSXPCConnection*, const std::shared_ptr<XPCConnection>&) {});
    loopback.close();
    const std::shared_ptr<XPCConnection> client =
        loopback.makeClient(SupportPrivilegedHelperClient::xpcInterface());
    client->resume();
    const Answer answer = install(*client, kPackage);
    client->invalidate();
    const bool isRight = answer.replies == 0 && answer.failures == 1 && answer.error;
    return isRight ? passed("\"" + answer.error->description + "\" " + std::to_string(answer.error->code))
                   : failed(textOf(answer));
}

}  // namespace

Checks connectionChecks() {
    return {{"xpc.list", checkList},
            {"xpc.reports", checkReports},
            {"xpc.second-list", checkSecondList},
            {"xpc.reply", checkReply},
            {"xpc.reply-with-error", checkReplyWithError},
            {"xpc.reply-that-never-comes", checkReplyThatNeverComes},
            {"xpc.client-ends", checkClientEnds},
            {"xpc.service-ends", checkServiceEnds},
            {"xpc.nobody-there", checkNobodyThere}};
}

}  // namespace Selftest
