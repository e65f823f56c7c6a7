#include "service/tree/Preconditions.h"

#include <algorithm>

#include "service/protocol/HttpDate.h"
#include "service/protocol/HttpError.h"

namespace service::tree {
namespace {

void SkipSpace(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

bool Take(std::string_view& text, std::string_view token) {
    SkipSpace(text);
    if (text.substr(0, token.size()) != token) {
        return false;
    }
    text.remove_prefix(token.size());
    return true;
}

// What stands before `end`, which is taken too.
std::string TakeUntil(std::string_view& text, char end) {
    const std::size_t length = text.find(end);
    if (length == std::string_view::npos) {
        throw protocol::HttpError(400, std::string("The header If lacks a '") + end + "'");
    }
    std::string taken(text.substr(0, length));
    text.remove_prefix(length + 1);
    return taken;
}

}  // namespace

bool HasTag(std::string_view list, const store::Resource& resource, bool matchWeak) {
    if (Take(list, "*")) {
        return true;
    }
    while (!list.empty()) {
        const bool isWeak = Take(list, "W/");
        SkipSpace(list);
        const std::size_t quoted = list.substr(0, 1) == "\"" ? list.find('"', 1) : std::string_view::npos;
        const std::size_t length =
            quoted == std::string_view::npos ? std::min(list.find(','), list.size()) : quoted + 1;
        if (!resource.isCollection && list.substr(0, length) == resource.ETag() && (matchWeak || !isWeak)) {
            return true;
        }
        list.remove_prefix(std::min(list.find(',', length), list.size()));
        Take(list, ",");
    }
    return false;
}

Preconditions::Preconditions(const protocol::Request& request) : _request(request) {
    if (const std::string* text = request.Header("if")) {
        _ParseIf(*text);
    }
}

void Preconditions::_ParseIf(std::string_view text) {
    std::optional<std::string> path;
    SkipSpace(text);
    while (!text.empty()) {
        if (Take(text, "<")) {
            path = _request.PathOf(TakeUntil(text, '>'));
        }
        if (!Take(text, "(")) {
            throw protocol::HttpError(400, "The header If lacks a '('");
        }
        Conditions conditions;
        conditions.path = path;
        while (!Take(text, ")")) {
            Condition condition;
            condition.isNegated = Take(text, "Not");
            if (Take(text, "[")) {
                condition.tag = TakeUntil(text, ']');
            } else if (Take(text, "<")) {
                TakeUntil(text, '>');
            } else {
                throw protocol::HttpError(400,
                                          "The header If has neither an entity tag nor a lock token where one must be");
            }
            conditions.all.push_back(condition);
        }
        _anyOf.push_back(std::move(conditions));
        SkipSpace(text);
    }
}

void Preconditions::Check(const std::string& path, const std::optional<store::Resource>& resource,
                          const Finder& find) const {
    const std::string* match = _request.Header("if-match");
    if (match != nullptr && (!resource || !HasTag(*match, *resource, false))) {
        throw protocol::HttpError(412, "If-Match: the resource is not the one expected");
    }
    const std::string* unmodified = _request.Header("if-unmodified-since");
    const auto since = unmodified == nullptr ? std::nullopt : protocol::ParseHttpDate(*unmodified);
    if (match == nullptr && since && resource && resource->ModifiedSeconds() > *since) {
        throw protocol::HttpError(412, "If-Unmodified-Since: the resource has been modified");
    }
    const std::string* noneMatch = _request.Header("if-none-match");
    const bool isReading = _request.method == "GET" || _request.method == "HEAD";
    if (noneMatch != nullptr && !isReading && resource && HasTag(*noneMatch, *resource, true)) {
        throw protocol::HttpError(412, "If-None-Match: the resource is there");
    }
    const bool anyHolds = std::any_of(_anyOf.begin(), _anyOf.end(), [&](const Conditions& conditions) {
        const auto target = conditions.path && *conditions.path != path ? find(*conditions.path) : resource;
        return std::all_of(conditions.all.begin(), conditions.all.end(), [&](const Condition& condition) {
            const bool holds = !condition.tag.empty() && target && target->ETag() == condition.tag;
            return holds != condition.isNegated;
        });
    });
    if (!_anyOf.empty() && !anyHolds) {
        throw protocol::HttpError(412, "If: none of the lists of conditions holds");
    }
}

}  // namespace service::tree
