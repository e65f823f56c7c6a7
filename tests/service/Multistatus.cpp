#include "tests/service/Multistatus.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <functional>
#include <memory>
#include <regex>
#include <stdexcept>

namespace service::test {
namespace {

std::string Name(const xmlNode* node) {
    const std::string name = reinterpret_cast<const char*>(node->name);
    const std::string space = node->ns == nullptr ? "" : reinterpret_cast<const char*>(node->ns->href);
    return space == "DAV:" ? name : "{" + space + "}" + name;
}

std::string Text(const xmlNode* node) {
    const std::unique_ptr<xmlChar, void (*)(xmlChar*)> text(xmlNodeGetContent(node),
                                                            [](xmlChar* content) { xmlFree(content); });
    return reinterpret_cast<const char*>(text.get());
}

void EachChild(const xmlNode* parent, const std::function<void(const std::string&, const xmlNode*)>& use) {
    for (const xmlNode* node = parent->children; node != nullptr; node = node->next) {
        if (node->type == XML_ELEMENT_NODE) {
            use(Name(node), node);
        }
    }
}

void AddValue(const xmlNode* property, Multistatus::Response& response) {
    if (xmlChildElementCount(const_cast<xmlNode*>(property)) == 0) {
        response.values[Name(property)] = Text(property);
        return;
    }
    EachChild(property, [&](const std::string&, const xmlNode* inner) { AddValue(inner, response); });
}

}  // namespace

Multistatus::Multistatus(const std::string& body) {
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
        xmlReadMemory(body.data(), static_cast<int>(body.size()), "answer", nullptr, XML_PARSE_HUGE), xmlFreeDoc);
    if (document == nullptr || Name(xmlDocGetRootElement(document.get())) != "multistatus") {
        throw std::runtime_error("No multistatus: " + body);
    }
    EachChild(xmlDocGetRootElement(document.get()), [&](const std::string& kind, const xmlNode* element) {
        if (kind != "response") {
            return;
        }
        std::string href;
        Response response;
        EachChild(element, [&](const std::string& name, const xmlNode* part) {
            if (name == "href") {
                href = Text(part);
            } else if (name == "propstat") {
                int status = 0;
                EachChild(part, [&](const std::string& inner, const xmlNode* node) {
                    if (inner == "status") {
                        status = std::stoi(Text(node).substr(std::string("HTTP/1.1 ").size()));
                    }
                });
                EachChild(part, [&](const std::string& inner, const xmlNode* prop) {
                    if (inner == "prop") {
                        EachChild(prop, [&](const std::string& property, const xmlNode* node) {
                            response.statuses[property] = status;
                            if (status == 200) {
                                AddValue(node, response);
                            }
                        });
                    }
                });
            }
        });
        if (!responses.emplace(href, response).second) {
            throw std::runtime_error("Twice: " + href);
        }
    });
}

std::map<std::string, std::string> Properties(HttpClient& client, const std::string& target) {
    const auto answer = client.Send("PROPFIND", target, {"Depth: 0"},
                                    "<propfind xmlns='DAV:'><allprop/><include><syncproperties/><resourceclasstype/>"
                                    "</include></propfind>");
    return answer.status == 207 ? Multistatus(answer.body).responses.begin()->second.values
                                : std::map<std::string, std::string>();
}

std::string Normalized(const std::string& body) {
    static const std::regex httpDate("[A-Z][a-z]{2}, [0-9]{2} [A-Z][a-z]{2} [0-9]{4} [0-9:]{8} GMT");
    static const std::regex isoDate("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z");
    static const std::regex time("[0-9]+(\\.[0-9]+)?</O:mtime>");
    static const std::regex store("[0-9a-f]{12}-");
    std::string text = std::regex_replace(body, httpDate, "DATE");
    text = std::regex_replace(text, isoDate, "ISODATE");
    text = std::regex_replace(text, time, "SECONDS</O:mtime>");
    return std::regex_replace(text, store, "STORE-");
}

}  // namespace service::test
