#include <algorithm>
#include <asio/ip/address.hpp>
#include <asio/ip/host_name.hpp>
#include <fstream>
#include <regex>

#include "orv/bridge/mqtt/facts.h"
#include "orv/bridge/mqtt/gateway.h"
#include "orv/commands/bridge.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

using namespace bridge;

constexpr auto EndWithin = std::chrono::seconds(5);

struct MqttOptions {
    std::string url;
    std::string site;
    std::string gateway;
    std::string passwordFile;
    unsigned queueMiB = 16;
    bool isPlainAllowed = false;
    LinkOptions link{UsualBlock};
    BrokerOptions broker;
};

Problem BadUrl(const std::string& url, const std::string& why) {
    return {ExitStatus::BadUsage,
            "--broker " + url + ": " + why + ". Write mqtts://HOST or mqtts://HOST:PORT"};
}

bool IsThisMachine(const std::string& host) {
    std::error_code error;
    return host == "localhost" || asio::ip::make_address(host, error).is_loopback();
}

void ParseUrl(MqttOptions& options) {
    const std::string& url = options.url;
    BrokerOptions& broker = options.broker;
    if (url.find('@') != std::string::npos) {
        throw BadUrl("",
                     "a user or password in it would show in the list of processes. Use "
                     "--user and --password-file");
    }
    static const std::regex form(R"(mqtt(s?)://(?:\[([0-9a-fA-F:.]+)\]|([\w.-]+))(?::(\d{1,5}))?)");
    std::smatch parts;
    if (!std::regex_match(url, parts, form)) {
        throw BadUrl(url, "it is not the address of a broker");
    }
    broker.hasTls = parts[1].length() > 0;
    broker.host = parts[2].str() + parts[3].str();
    broker.port = parts[4].matched ? std::stoi(parts[4]) : broker.hasTls ? 8883 : 1883;
    if (broker.port < 1 || broker.port > 65535) {
        throw BadUrl(url, "its port is not a number from 1 to 65535");
    }
    if (!broker.hasTls && !IsThisMachine(broker.host) && !options.isPlainAllowed) {
        throw BadUrl(url,
                     "mqtt:// sends everything unencrypted to another machine. Use mqtts://, "
                     "or --plain if the network is trusted");
    }
}

std::string ReadPassword(const std::string& name) {
    std::ifstream file(PathOf(name));
    std::string password;
    std::getline(file, password);
    password.erase(std::min(password.find('\r'), password.size()));
    if (password.empty()) {
        throw Problem(ExitStatus::FileFailed,
                      "cannot read a password from " + name +
                          ": its first line is empty, or you may not read it");
    }
    return password;
}

std::string HostName() {
    std::error_code error;
    const std::string host = asio::ip::host_name(error);
    return host.substr(0, host.find('.'));
}

void Check(MqttOptions& options) {
    if (options.gateway.empty()) {
        options.gateway = HostName();
    }
    for (const std::string& name : {options.site, options.gateway}) {
        if (!IsName(name)) {
            throw Problem(
                ExitStatus::BadUsage,
                "\"" + name +
                    "\" is not a name of a site or gateway: --site and --gateway take 1 to "
                    "64 letters, digits, - and _");
        }
    }
    ParseUrl(options);
    BrokerOptions& broker = options.broker;
    if (!broker.hasTls && (!broker.authorities.empty() || !broker.certificate.empty())) {
        throw BadUrl(options.url, "--ca and --cert need mqtts://");
    }
    if (!options.passwordFile.empty()) {
        broker.password = ReadPassword(options.passwordFile);
    }
    broker.client = "orv-" + options.site + "-" + options.gateway;
    broker.queueBytes = std::size_t{options.queueMiB} << 20;
}

void BridgeMqtt(const LibraryOptions& libraryOptions, MqttOptions& options) {
    Check(options);
    Library library = OpenLibrary(libraryOptions);
    RequireBluetooth(library);
    terminal::CatchInterrupts();
    const std::int64_t run = UnixTime();
    const Topics topics(options.site, options.gateway);
    LinkPool links(library, options.link);
    Broker broker(options.broker, Gateway::Status(topics, false, run, 0));
    const SiteDevice::Site site{links, broker, topics, options.gateway, run};
    Gateway gateway(library, site, options.url);
    StateView view;
    do {
        gateway.Step();
        view.Show(gateway.Rows());
    } while (terminal::Pause(static_cast<int>(PollEvery.count())));
    view.End(gateway.Rows());
    const auto end = std::chrono::steady_clock::now() + EndWithin;
    while (!gateway.End() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(PollEvery);
    }
}

void AddBrokerOptions(Command command, MqttOptions& options) {
    const char* const heading = "The broker";
    const auto addFile = [&](const char* name, std::string& file, const char* help) {
        return command.AddText(name, file, help).ExistingFile().Named("FILE").Under(heading);
    };
    addFile(
        "--ca", options.broker.authorities,
        "Certificates of the authorities that may sign the broker's; default: those of the system");
    Option certificate =
        addFile("--cert", options.broker.certificate, "This gateway's certificate");
    Option key = addFile("--key", options.broker.key, "The private key of the certificate");
    certificate.Needs(key);
    key.Needs(certificate);
    const Option user = command.AddText("--user", options.broker.user, "The user's name")
                            .Named("NAME")
                            .Under(heading);
    addFile("--password-file", options.passwordFile, "A file whose first line is the password")
        .Needs(user);
    command
        .AddFlag("--plain", options.isPlainAllowed,
                 "Allows mqtt://, which is not encrypted, to another machine")
        .Under(heading);
    command
        .AddNumber("--queue", options.queueMiB, 1, 1024,
                   "How much of what devices send is kept while there is no connection to the "
                   "broker; default 16")
        .Named("MIB")
        .Under(heading);
}

}  // namespace

void AddBridgeMqttCommand(Command bridge, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<MqttOptions>();
    Command command = bridge.AddCommand(
        "mqtt", "Serves all devices in range as topics of an MQTT broker, until Ctrl-C.");
    command.AddText("--broker", options->url, "mqtts://HOST[:PORT], or mqtt:// on this machine")
        .Required()
        .Named("URL");
    command.AddText("--site", options->site, "The name of the site, a level of all topics")
        .Required()
        .Named("NAME");
    command
        .AddText("--gateway", options->gateway,
                 "The name of this gateway on its site; default: this machine's name")
        .Named("NAME");
    AddBrokerOptions(command, *options);
    AddLinkOptions(command, options->link);
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter("orv --simulated bridge mqtt --broker mqtt://localhost --site works",
                      BridgeStatuses);
    command.Does([&libraryOptions, options] { BridgeMqtt(libraryOptions, *options); });
}

}  // namespace orv
