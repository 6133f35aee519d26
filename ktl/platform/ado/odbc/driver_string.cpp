#include "ktl/platform/ado/odbc/driver_string.h"

#include "ktl/platform/ado/names.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::odbc {

namespace {

constexpr const char *kDefaultDriver = "FreeTDS";
constexpr const char *kDefaultPort = "1433";
constexpr const char *kThisMachine = "127.0.0.1";
constexpr const char *kProtocolPrefix = "tcp:";

struct ServerName {
    std::string host;
    std::string instance;
    std::string port;
};

std::string Trimmed(const std::string &text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

ServerName SplitServer(std::string text) {
    ServerName server;
    if (EqualNames(std::string_view(text).substr(0, 4), kProtocolPrefix)) text.erase(0, 4);
    if (const std::size_t comma = text.find(','); comma != std::string::npos) {
        server.port = Trimmed(text.substr(comma + 1));
        text.resize(comma);
    }
    if (const std::size_t slash = text.find('\\'); slash != std::string::npos) {
        server.instance = Trimmed(text.substr(slash + 1));
        text.resize(slash);
    }
    server.host = Trimmed(text);
    if (server.host.empty() || server.host == "." || EqualNames(server.host, "(local)")) server.host = kThisMachine;
    return server;
}

/// In braces where the value holds what would end it, with the closing brace doubled.
std::string Quoted(const std::string &value) {
    if (value.find_first_of(";{}=' \"") == std::string::npos) return value;
    std::string quoted = "{";
    for (const char c : value) {
        quoted += c;
        if (c == '}') quoted += c;
    }
    return quoted + "}";
}

void Add(std::string &text, const char *name, const std::string &value) {
    text += std::string(text.empty() ? "" : ";") + name + "=" + Quoted(value);
}

bool IsOn(const CString &value) {
    return EqualNames(value.View(), "SSPI") || EqualNames(value.View(), "True") || EqualNames(value.View(), "Yes");
}

}  // namespace

std::string DriverName(const ConnectionString &settings) {
    return settings.Has("Driver") ? ToUtf8(settings.Get("Driver")) : kDefaultDriver;
}

std::string DriverString(const ConnectionString &settings) {
    const ServerName server = SplitServer(ToUtf8(settings.Get(settings.Has("Data Source") ? "Data Source" : "Server")));
    std::string text;
    Add(text, "Driver", DriverName(settings));
    // A port and an instance exclude each other: the driver asks the server for an instance's port.
    if (server.port.empty() && !server.instance.empty()) {
        Add(text, "Server", server.host + "\\" + server.instance);
    } else {
        Add(text, "Server", server.host);
        Add(text, "Port", server.port.empty() ? kDefaultPort : server.port);
    }
    if (IsOn(settings.Get("Integrated Security"))) {
        Add(text, "Trusted_Connection", "Yes");
    } else {
        Add(text, "UID", ToUtf8(settings.Get("User ID")));
        Add(text, "PWD", ToUtf8(settings.Get("Password")));
    }
    if (settings.Has("Initial Catalog")) Add(text, "Database", ToUtf8(settings.Get("Initial Catalog")));
    Add(text, "TDS_Version", "7.4");
    Add(text, "ClientCharset", "UTF-8");
    return text;
}

}  // namespace ktl::ado::odbc
