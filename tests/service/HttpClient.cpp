#include "tests/service/HttpClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <memory>

namespace service::test {
namespace {

std::size_t AppendBody(const char* data, std::size_t size, std::size_t count, void* answer) {
    static_cast<HttpClient::Answer*>(answer)->body.append(data, size * count);
    return size * count;
}

std::size_t AddHeader(const char* data, std::size_t size, std::size_t count, void* answer) {
    auto& headers = static_cast<HttpClient::Answer*>(answer)->headers;
    const std::string line(data, size * count);
    if (line.rfind("HTTP/", 0) == 0) {
        headers.clear();
    }
    if (const std::size_t colon = line.find(':'); colon != std::string::npos) {
        std::string name = line.substr(0, colon);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const std::size_t begin = line.find_first_not_of(' ', colon + 1);
        headers[name] = line.substr(begin, line.find_last_not_of("\r\n") + 1 - begin);
    }
    return size * count;
}

}  // namespace

HttpClient::HttpClient(int port, const std::string& userAndPassword) : _port(port), _curl(curl_easy_init()) {
    constexpr long seconds = 20;
    curl_easy_setopt(_curl, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(_curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(_curl, CURLOPT_TIMEOUT, seconds);
    curl_easy_setopt(_curl, CURLOPT_WRITEFUNCTION, &AppendBody);
    curl_easy_setopt(_curl, CURLOPT_HEADERFUNCTION, &AddHeader);
    if (!userAndPassword.empty()) {
        curl_easy_setopt(_curl, CURLOPT_USERPWD, userAndPassword.c_str());
    }
}

HttpClient::~HttpClient() {
    curl_easy_cleanup(_curl);
}

std::string HttpClient::Url(const std::string& target) const {
    return "http://127.0.0.1:" + std::to_string(_port) + target;
}

HttpClient::Answer HttpClient::Send(const std::string& method, const std::string& target,
                                    const std::vector<std::string>& headers, const std::string& body) {
    curl_slist* lines = curl_slist_append(nullptr, "Content-Type:");
    for (const std::string& header : headers) {
        lines = curl_slist_append(lines, header.c_str());
    }
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> owned(lines, curl_slist_free_all);
    Answer answer;
    curl_easy_setopt(_curl, CURLOPT_URL, Url(target).c_str());
    curl_easy_setopt(_curl, CURLOPT_HTTPHEADER, lines);
    curl_easy_setopt(_curl, CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(_curl, CURLOPT_HEADERDATA, &answer);
    curl_easy_setopt(_curl, CURLOPT_HTTPGET, 1L);
    if (!body.empty() || method == "PUT") {
        curl_easy_setopt(_curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        curl_easy_setopt(_curl, CURLOPT_POSTFIELDS, body.c_str());
    }
    curl_easy_setopt(_curl, CURLOPT_NOBODY, method == "HEAD" ? 1L : 0L);
    curl_easy_setopt(_curl, CURLOPT_CUSTOMREQUEST, method.c_str());
    const CURLcode result = curl_easy_perform(_curl);
    if (result != CURLE_OK) {
        answer.error = curl_easy_strerror(result);
    }
    curl_easy_getinfo(_curl, CURLINFO_RESPONSE_CODE, &answer.status);
    curl_easy_getinfo(_curl, CURLINFO_NUM_CONNECTS, &answer.connections);
    return answer;
}

}  // namespace service::test
