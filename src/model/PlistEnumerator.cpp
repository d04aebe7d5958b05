#include "PlistEnumerator.h"

PlistEnumerator::PlistEnumerator(ADPlistObject::Pointer plistObject)
{
    _stack.push_back({std::move(plistObject), 0});
}

ADPlistObject *PlistEnumerator::nextObject()
{
    while (!_stack.empty()) {
        Frame &frame = _stack.back();
        if (frame.nextIndex >= frame.node->childCount()) {
            _stack.pop_back();
            continue;
        }
        ADPlistObject::Pointer child = frame.node->childPointerAtIndex(frame.nextIndex++);
        ADPlistObject *answer = child.get();
        if (child->hasChildren())
            _stack.push_back({std::move(child), 0}); // `frame` is stale from here
        return answer;
    }
    return nullptr;
}
