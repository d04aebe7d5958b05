#pragma once

#include "ContainerBuilder.h"
#include "JsonEncoding.h"
#include "StringCache.h"

#include <QByteArrayView>
#include <QString>

#include <string>

/// What the old-style and JSON parsers share: a cursor over checked UTF-8
/// text, the containers open at it, the buffers strings are decoded into,
/// the first failure with its place, and the loop that feeds finished values
/// to the container around them. `Derived` is the parser: it gives
/// `attach(element, out)`, which adds a finished value to the innermost open
/// container and reads on to the separator or closer after it, and
/// `next(out)`, which reads the next element of that container. `Opened` is
/// what the parser keeps of an open container. One pass, one thread.
/// Invariant: _begin <= _p <= _end.
template <typename Derived, typename Opened> class TextParser
{
public:
    explicit TextParser(QByteArrayView text)
        : _begin(text.data()), _p(_begin), _end(_begin + text.size())
    {}

    const JsonEncoding::Failure &failure() const { return _failure; }

protected:
    // What a step left: an error, a finished value, or an open container
    // waiting for its next element.
    enum class Step
    {
        Failed,
        Value,
        Next,
    };
    using Builder = ContainerBuilder<Opened>;

    /// Steps from `step` until a value stands with no container open around
    /// it, or a step fails.
    Step run(Step step, PlistValue &value)
    {
        Derived &parser = static_cast<Derived &>(*this);
        for (;;) {
            if (step == Step::Failed)
                return step;
            if (step == Step::Value) {
                if (_open.isEmpty())
                    return step;
                step = parser.attach(std::move(value), value);
            } else {
                step = parser.next(value);
            }
        }
    }

    Step fail(const char *at, ReadError::Kind kind, const QString &message)
    {
        _failure = JsonEncoding::failure(_begin, _end, at, kind, message);
        return Step::Failed;
    }
    QString describe(const char *p) const { return JsonEncoding::describe(p, _end); }
    QString found() const { return describe(_p); }

    const char *const _begin;
    const char *_p;
    const char *const _end;
    Builder _open;
    StringCache _strings;
    std::u16string _buffer; // the units of a string being decoded
    JsonEncoding::Failure _failure;
};
