#include "ADPlistIterator.h"

#include <algorithm>

namespace {

bool hasGrandchildren(const ADPlistObject *node)
{
    return node && node->childCount() > 0;
}

ADPlistObject::Pointer pointerTo(ADPlistObject *node)
{
    return ADPlistObject::Pointer(node);
}

} // namespace

ADPlistIterator::ADPlistIterator(ADPlistObject::Pointer rootObject, bool wraps)
    : _rootObject(rootObject), _currentObject(std::move(rootObject)), _wraps(wraps)
{}

ADPlistObject *ADPlistIterator::childUnderCursor() const
{
    if (_childIndex >= 0 && _childIndex < _currentObject->childCount())
        return _currentObject->childAtIndex(_childIndex);
    return nullptr;
}

ADPlistObject *ADPlistIterator::currentObject() const
{
    if (ADPlistObject *child = childUnderCursor())
        return child;
    if (!_wraps && _iterationComplete)
        return nullptr;
    return _currentObject.get();
}

void ADPlistIterator::climbPastTheEnd()
{
    while (_childIndex >= _currentObject->childCount() && _currentObject != _rootObject) {
        ADPlistObject *up = _currentObject->plistObjectParent();
        if (!up)
            break; // detached under us: end the walk
        _childIndex = _currentObject->indexInParent() + 1;
        _currentObject = pointerTo(up);
    }
    if (_childIndex >= _currentObject->childCount()) {
        _currentObject = _rootObject;
        _childIndex = -1;
        _iterationComplete = true;
    }
}

ADPlistObject *ADPlistIterator::nextObject()
{
    ADPlistObject *child = childUnderCursor();
    if (hasGrandchildren(child)) {
        _currentObject = pointerTo(child);
        _childIndex = 0;
    } else {
        ++_childIndex;
        climbPastTheEnd();
    }
    return currentObject();
}

ADPlistObject *ADPlistIterator::previousObject()
{
    _childIndex =
        std::min(_childIndex, _currentObject->childCount()); // past the end counts as the end
    if (_childIndex == 0) {
        ADPlistObject *up =
            _currentObject == _rootObject ? nullptr : _currentObject->plistObjectParent();
        if (!up) {
            _currentObject = _rootObject;
            _childIndex = -1;
            _iterationComplete = true;
        } else {
            _childIndex = _currentObject->indexInParent();
            _currentObject = pointerTo(up);
        }
        return currentObject();
    }
    if (_childIndex < 0) {
        ADPlistObject *deepest = _currentObject.get();
        while (hasGrandchildren(deepest))
            deepest = deepest->childAtIndex(deepest->childCount() - 1);
        if (deepest == _rootObject.get()) {
            // Nothing below the root: the walk is over at once, as forward. Standing
            // on the root instead would answer it again on every later call.
            _iterationComplete = true;
            return currentObject();
        }
        _currentObject = pointerTo(deepest->plistObjectParent());
        _childIndex = _currentObject->childCount() - 1;
        return currentObject();
    }
    --_childIndex;
    while (ADPlistObject *child = childUnderCursor()) {
        if (!hasGrandchildren(child))
            break;
        _currentObject = pointerTo(child);
        _childIndex = child->childCount() - 1;
    }
    return currentObject();
}

void ADPlistIterator::jumpToObject(ADPlistObject *object)
{
    _iterationComplete = false;
    if (!object || object == _rootObject.get() || !object->plistObjectParent()) {
        _currentObject = _rootObject;
        _childIndex = -1;
        return;
    }
    _currentObject = pointerTo(object->plistObjectParent());
    _childIndex = object->indexInParent();
}
