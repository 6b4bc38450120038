#include "simulator/panel_page/server.h"

#include "simulator/panel_page/page.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <httplib.h>
#include <stdexcept>
#include <sys/random.h>

namespace simulator {

namespace {

namespace fs = std::filesystem;
using httplib::Request;
using httplib::Response;

constexpr const char host[] = "127.0.0.1";
constexpr size_t threads = 24;
constexpr int most_windows = 16; // each one's stream occupies a thread
constexpr size_t largest_package = 512u << 20;
constexpr size_t longest_name = 80;
constexpr auto heartbeat = std::chrono::seconds(5);
constexpr auto least_pause =
    std::chrono::milliseconds(30); // between messages, so that simultaneous events share one

const httplib::Headers headers = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src data:; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

std::string new_token() {
    std::array<uint8_t, 16> bytes;
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("no random numbers");
    }
    std::string token;
    for (const uint8_t byte : bytes) {
        for (const int digit : {byte >> 4, byte & 15}) {
            token += "0123456789abcdef"[digit];
        }
    }
    return token;
}

// A safe file name for the one that a browser sends; it becomes part of a path on the unit, too.
std::string harmless_name(const std::string &named) {
    std::string name;
    for (const char one : named.substr(0, longest_name)) {
        const bool usual = std::isalnum(static_cast<unsigned char>(one)) || strchr("._-", one);
        name += usual ? one : '_';
    }
    return name.find_first_not_of('.') == std::string::npos ? "package" : name;
}

void answer_refusal(Response &answer, const std::string &why) {
    answer.status = why.empty() ? 204 : 409;
    if (!why.empty()) {
        answer.set_content(why, "text/plain; charset=utf-8");
    }
}

// Where an interrupted stream continues: "<run>.<number of events already sent>".
panel_session::position position_after(const std::string &last_news) {
    panel_session::position from;
    if (sscanf(last_news.c_str(), "%d.%zu", &from.run, &from.events) != 2) {
        return {};
    }
    return from;
}

class panel_server {
public:
    panel_server(panel_session &served, int port, const fs::path &work_directory)
        : session(served), work(work_directory) {
        web.new_task_queue = [] { return new httplib::ThreadPool(threads); };
        web.set_keep_alive_timeout(1); // how long stopping may wait for a window
        web.set_default_headers(headers);
        web.set_payload_max_length(largest_package);
        web.set_tcp_nodelay(true);
        const int bound = port == 0                      ? web.bind_to_any_port(host)
                          : web.bind_to_port(host, port) ? port
                                                         : -1;
        if (bound <= 0) {
            throw std::runtime_error("port " + std::to_string(port) + " cannot be used");
        }
        for (const char *name : {host, "localhost"}) {
            own_names.push_back(name + (":" + std::to_string(bound)));
        }
        set_routes();
    }

    std::string address() const { return "http://" + own_names[0] + base; }
    void listen() { web.listen_after_bind(); }
    void stop() {
        web.stop();
        session.close();
    }

private:
    // Refuses requests from pages of other origins: host names that resolve to this address (DNS
    // rebinding), and forms of other sites.
    bool is_own(const Request &asked) const {
        const auto own = [&](const std::string &name) {
            return std::ranges::find(own_names, name) != own_names.end();
        };
        const std::string origin = asked.get_header_value("Origin");
        return own(asked.get_header_value("Host")) &&
               (origin.empty() || (origin.starts_with("http://") && own(origin.substr(7))));
    }

    void set_routes() {
        using handled = httplib::Server::HandlerResponse;
        web.set_pre_routing_handler([this](const Request &asked, Response &answer) {
            if (is_own(asked) && asked.path.starts_with(base)) {
                return handled::Unhandled;
            }
            answer.status = is_own(asked) ? 404 : 403;
            return handled::Handled;
        });
        serve("", page_html, "text/html; charset=utf-8");
        serve("panel.css", page_css, "text/css; charset=utf-8");
        serve("panel.js", page_js, "text/javascript; charset=utf-8");
        web.Get(base + "events", [this](const Request &asked, Response &answer) {
            stream(asked.get_header_value("Last-Event-ID"), answer);
        });
        web.Get(base + "picture", [this](const Request &, Response &answer) {
            const picture seen = session.screen();
            answer.set_header("X-Width", std::to_string(seen.width));
            answer.set_content(reinterpret_cast<const char *>(seen.rgb.data()), seen.rgb.size(),
                               "application/octet-stream");
        });
        web.Post(base + "package", [this](const Request &asked, Response &answer,
                                          const httplib::ContentReader &content) {
            take_package(asked.get_param_value("value"), content, answer);
        });
        web.Post(base + "([a-z_]+)", [this](const Request &asked, Response &answer) {
            answer_refusal(answer,
                           session.act(asked.matches[1].str(), asked.get_param_value("value")));
        });
    }

    void serve(const char *name, std::string_view content, const char *type) {
        web.Get(base + name, [content, type](const Request &, Response &answer) {
            answer.set_content(content.data(), content.size(), type);
        });
    }

    void stream(const std::string &last_event, Response &answer) {
        if (++windows > most_windows) {
            --windows;
            answer.status = 503;
            return;
        }
        answer.set_chunked_content_provider(
            "text/event-stream",
            [this, from = position_after(last_event)](size_t, httplib::DataSink &sink) mutable {
                std::this_thread::sleep_for(least_pause);
                const std::string text = session.news(from, heartbeat);
                if (text.empty()) {
                    sink.done();
                    return true;
                }
                return sink.write(text.data(), text.size());
            },
            [this](bool) { --windows; });
    }

    void take_package(const std::string &name, const httplib::ContentReader &content,
                      Response &answer) {
        const fs::path directory = work / ("dropped-" + std::to_string(++packages));
        fs::create_directory(directory);
        const fs::path file = directory / harmless_name(name);
        std::ofstream to(file, std::ios::binary);
        const bool whole = content([&](const char *bytes, size_t size) {
            return static_cast<bool>(to.write(bytes, static_cast<std::streamsize>(size)));
        });
        to.close();
        if (!whole || !to) {
            answer_refusal(answer, "The package did not come whole.");
            return;
        }
        session.start_with(file);
        answer_refusal(answer, "");
    }

    panel_session &session;
    fs::path work;
    httplib::Server web;
    const std::string base = "/" + new_token() + "/";
    std::vector<std::string> own_names;
    std::atomic<int> windows = 0;
    std::atomic<int> packages = 0;
};

} // namespace

void serve_panel(panel_session &session, int port, const fs::path &work,
                 const std::function<void(const std::string &address)> &begun,
                 const std::function<bool()> &ended) {
    panel_server server(session, port, work);
    std::thread listener([&] { server.listen(); });
    begun(server.address());
    while (!ended()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    server.stop();
    listener.join();
}

} // namespace simulator
