#include "client/changes/CollectionTags.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include "client/requests/PropfindRequest.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace changes {

using requests::PropfindRequest;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResult;
using Answer = ServiceChanges::Answer;

namespace {

/// A token is read without the spaces around it, so that none begins with one.
const QLatin1Char Mark(' ');

QString IdIn(const QString& tag) {
    return tag.left(tag.indexOf(QLatin1Char(' ')));
}

}  // namespace

bool CollectionTags::IsState(const QString& state) {
    return state.startsWith(Mark);
}

QString CollectionTags::_TextOf(const Tags& tags) {
    QJsonObject below;
    for (auto tag = tags.below.begin(); tag != tags.below.end(); ++tag) {
        below.insert(tag.key(), tag.value());
    }
    const QJsonObject object{{QStringLiteral("own"), tags.own}, {QStringLiteral("below"), below}};
    return Mark + QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

CollectionTags::Tags CollectionTags::_TagsIn(const QString& state) {
    const QJsonObject object = QJsonDocument::fromJson(state.toUtf8()).object();
    Tags tags;
    tags.own = object.value(QLatin1String("own")).toString();
    const QJsonObject below = object.value(QLatin1String("below")).toObject();
    for (auto tag = below.begin(); tag != below.end(); ++tag) {
        tags.below.insert(tags.below.constEnd(), tag.key(), tag.value().toString());
    }
    return tags;
}

QString CollectionTags::StateOf(const StateRequest& now) {
    if (now.Tag().isEmpty()) {
        return QString();
    }
    _Supplement().KeepTags();
    return _TextOf({now.Tag(), {}});
}

QString CollectionTags::Listed(const QString& state) {
    return _TextOf({_TagsIn(state).own, _Supplement().TakeTags()});
}

ToldChanges CollectionTags::ChangesSince(const QString& state) {
    ToldChanges told;
    try {
        _Ask(state, told);
    } catch (const wire::TransactionError& error) {
        if (!error.IsAnswerWrong()) {
            throw;
        }
    } catch (const sync::http::HttpException&) {
        // A listing of everything tells what is wrong.
    }
    // Whatever else came, the question for the state that follows finds out whether the server is able to tell.
    told.answer = told.state.isEmpty() ? Answer::Forgotten : Answer::Known;
    return told;
}

void CollectionTags::_Ask(const QString& state, ToldChanges& told) {
    const Tags known = _TagsIn(state);
    StateRequest now(_collection);
    _connection.Perform(now);
    told.at = now.ServerTime();
    if (now.Tag().isEmpty() || IdIn(now.Tag()) != IdIn(known.own)) {
        return;
    }
    if (now.Tag() == known.own) {
        told.state = state;
    } else if (const std::optional<QMap<QString, QString>> below = _Descend(known.below, told)) {
        told.state = _TextOf({now.Tag(), *below});
    }
}

std::optional<QMap<QString, QString>> CollectionTags::_Descend(const QMap<QString, QString>& known, ToldChanges& told) {
    wire::ListingSupplement& supplement = _Supplement();
    supplement.KeepTags();
    QSet<QString> entered;
    PropfindRequest tree(_collection, DAVPropfindRequest::Tree);
    try {
        _connection.ListByLevels(tree, [&](const QString& key) {
            const QString tag = supplement.TagOf(key);
            const bool isUnchanged = !tag.isEmpty() && tag == known.value(key);
            if (!isUnchanged) {
                entered.insert(key);
            }
            return !isUnchanged;
        });
    } catch (...) {
        supplement.TakeTags();
        throw;
    }
    const QMap<QString, QString> tags = supplement.TakeTags();
    told.present = tree.GetResult();
    if (!told.present) {
        return std::nullopt;
    }
    told.whole = std::make_shared<DAVPropfindResult>();
    QMap<QString, QString> now;
    const auto& folders = told.present->collectionResponses;
    for (auto folder = folders.begin(); folder != folders.end(); ++folder) {
        now.insert(folder.key(), tags.value(folder.key()));
        if (entered.contains(folder.key())) {
            told.whole->collectionResponses.insert(folder.key(), folder.value());
            continue;
        }
        const QString below = folder.key() + QLatin1Char('/');
        for (auto tag = known.lowerBound(below); tag != known.end() && tag.key().startsWith(below); ++tag) {
            now.insert(tag.key(), tag.value());
        }
    }
    return now;
}

}  // namespace changes
}  // namespace ovsync
