#pragma once

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <span>
#include <vector>

/// The arrays and dictionaries a reader has opened and not yet closed,
/// innermost last, with what each holds so far: the explicit stack that lets
/// every reader take any depth. A reader opens a container, adds its elements
/// (in a dictionary a key, then its value) and closes it, which gives the
/// finished container to add to the one around it.
///
/// A container whose size the input does not state gathers its elements and
/// is made when it closes, at its final size. One whose size the input states
/// is made when it opens and filled in place. Either way, a key met again in
/// one dictionary keeps its first place and takes the last value.
///
/// `Info` is what the reader keeps of each open container (where it opened,
/// which element it is). One builder per parse.
template <typename Info> class ContainerBuilder
{
public:
    enum class Kind : quint8
    {
        Array,
        Dictionary,
    };

    bool isEmpty() const { return _open.empty(); }
    /// The innermost open container's kind and info; the builder must not be empty.
    Kind kind() const { return _open.back().kind; }
    Info &info() { return _open.back().info; }
    const Info &info() const { return _open.back().info; }
    /// Elements added to the innermost container of unstated size: keys and
    /// values count one each.
    qsizetype count() const { return qsizetype(_elements.size()) - _open.back().base; }
    /// The key of the innermost dictionary's last pair, or the key that waits
    /// for its value; of a container of unstated size.
    const PlistValue &lastKey() const
    {
        return _elements[_open.back().base + (count() - 1) / 2 * 2];
    }

    /// Opens a container of unstated size inside the innermost one.
    void open(Kind kind, Info info)
    {
        _open.push_back({kind, true, qsizetype(_elements.size()), {}, {}, {}, std::move(info)});
    }
    /// Opens a container of `size` elements (pairs, in a dictionary).
    void openSized(Kind kind, qsizetype size, Info info)
    {
        Frame frame{kind, false, qsizetype(_elements.size()), {}, {}, {}, std::move(info)};
        if (kind == Kind::Array)
            frame.array = PlistArray::create(size);
        else
            frame.dictionary = PlistDictionary::create(size);
        _open.push_back(std::move(frame));
    }
    /// Adds an element to the innermost container.
    Q_ALWAYS_INLINE void add(PlistValue element)
    {
        Frame &frame = _open.back();
        if (frame.gathers)
            _elements.push_back(std::move(element));
        else if (!frame.array.isNull())
            frame.array.append(std::move(element));
        else
            addToMadeDictionary(frame, std::move(element));
    }
    /// Adds a key and its value to the innermost dictionary.
    void addPair(PlistValue key, PlistValue value)
    {
        Frame &frame = _open.back();
        Q_ASSERT(frame.kind == Kind::Dictionary && frame.key.isNone());
        if (frame.gathers) {
            _elements.push_back(std::move(key));
            _elements.push_back(std::move(value));
        } else {
            frame.dictionary.append(std::move(key), std::move(value));
        }
    }
    /// Closes the innermost container and gives it, finished.
    PlistValue close()
    {
        Frame frame = std::move(_open.back());
        _open.pop_back();
        if (!frame.array.isNull())
            return frame.array;
        if (!frame.dictionary.isNull()) {
            frame.dictionary.endAppending();
            return frame.dictionary;
        }
        const std::span<PlistValue> elements(_elements.data() + frame.base,
                                             _elements.size() - size_t(frame.base));
        PlistValue made;
        if (frame.kind == Kind::Array) {
            PlistArray array = PlistArray::create(qsizetype(elements.size()));
            for (PlistValue &element : elements)
                array.append(std::move(element));
            made = array;
        } else {
            PlistDictionary dictionary = PlistDictionary::create(qsizetype(elements.size() / 2));
            dictionary.insertPairs(elements);
            made = dictionary;
        }
        _elements.resize(size_t(frame.base));
        return made;
    }

private:
    struct Frame;

    static Q_NEVER_INLINE void addToMadeDictionary(Frame &frame, PlistValue element)
    {
        if (frame.key.isNone()) {
            frame.key = std::move(element);
        } else {
            frame.dictionary.append(std::move(frame.key), std::move(element));
            frame.key = PlistValue();
        }
    }

    struct Frame
    {
        Kind kind;
        bool gathers;               // its size is not stated
        qsizetype base;             // where its elements start in `_elements`, if it gathers them
        PlistArray array;           // made when it opened, if its size was stated
        PlistDictionary dictionary; // likewise
        PlistValue key;             // of a made dictionary: the key waiting for its value
        Info info;
    };

    std::vector<Frame> _open;
    std::vector<PlistValue> _elements;
};
