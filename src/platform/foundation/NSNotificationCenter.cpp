#include "platform/foundation/NSNotificationCenter.h"

namespace kestrine {

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

NSNotificationCenter::Token NSNotificationCenter::addObserver(const NSString& name, const Object& object,
                                                              Observer observer) {
    const std::lock_guard lock(mutex_);
    entries_.emplace(++lastToken_, Entry{name, object, std::move(observer)});
    return lastToken_;
}

void NSNotificationCenter::removeObserver(Token token) {
    const std::lock_guard lock(mutex_);
    entries_.erase(token);
}

NSNotificationCenter::Observer NSNotificationCenter::observerFor(Token token,
                                                                 const NSNotification& notification) const {
    const std::lock_guard lock(mutex_);
    const auto entry = entries_.find(token);
    const bool wants = entry != entries_.end() && entry->second.name == notification.name
                       && (entry->second.object == nullptr || entry->second.object == notification.object);
    return wants ? entry->second.observer : Observer();
}

void NSNotificationCenter::postNotification(const NSString& name, const Object& object,
                                            std::shared_ptr<const NSDictionary> userInfo) {
    const NSNotification notification{name, object, std::move(userInfo)};
    std::vector<Token> tokens;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [token, entry] : entries_)
            tokens.push_back(token);
    }
    for (const Token token : tokens)
        if (const Observer observer = observerFor(token, notification))
            observer(notification);
}

} // namespace kestrine
