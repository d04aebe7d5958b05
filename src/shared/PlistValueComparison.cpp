#include "PlistValue.h"

#include "PlistArray.h"
#include "PlistDictionary.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

enum class NumberClass
{
    Signed,
    Unsigned,
    Real
};

NumberClass numberClass(const PlistValue &v)
{
    if (v.isUnsigned())
        return NumberClass::Unsigned;
    return v.isReal() ? NumberClass::Real : NumberClass::Signed;
}

template <typename T> int threeWay(T a, T b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

// Exact comparison of a signed integer with a double, without the rounding of
// converting a large integer to double.
int compareIntegerReal(qint64 i, double d)
{
    if (std::isnan(d))
        return 0;
    if (d >= 9223372036854775808.0)
        return -1;
    if (d < -9223372036854775808.0)
        return 1;
    const double whole = std::floor(d);
    const auto wi = qint64(whole);
    if (i != wi)
        return threeWay(i, wi);
    return whole < d ? -1 : 0;
}

int compareUnsignedReal(quint64 u, double d)
{
    if (std::isnan(d))
        return 0;
    if (d >= 18446744073709551616.0)
        return -1;
    if (d < 9223372036854775808.0)
        return 1; // u is above the signed range
    const double whole = std::floor(d);
    const auto wu = quint64(whole);
    if (u != wu)
        return threeWay(u, wu);
    return whole < d ? -1 : 0;
}

int compareNumbers(const PlistValue &a, const PlistValue &b)
{
    const NumberClass ca = numberClass(a);
    const NumberClass cb = numberClass(b);
    if (ca == NumberClass::Real && cb == NumberClass::Real)
        return threeWay(a.toReal(), b.toReal());
    if (ca == NumberClass::Real)
        return -compareNumbers(b, a);
    if (cb == NumberClass::Real) {
        return ca == NumberClass::Unsigned ? compareUnsignedReal(a.toUnsigned(), b.toReal())
                                           : compareIntegerReal(a.toInteger(), b.toReal());
    }
    if (ca != cb)
        return ca == NumberClass::Unsigned ? 1 : -1; // unsigned values lie above the signed range
    return ca == NumberClass::Unsigned ? threeWay(a.toUnsigned(), b.toUnsigned())
                                       : threeWay(a.toInteger(), b.toInteger());
}

int compareData(QByteArrayView a, QByteArrayView b)
{
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    const int c = a.isEmpty() ? 0 : std::memcmp(a.constData(), b.constData(), size_t(a.size()));
    return threeWay(c, 0);
}

bool numberLike(const PlistValue &v)
{
    return v.isNumber() || v.isBoolean();
}

// Leaves compare equal under the plist rule when they are of one type and equal.
bool leavesEqual(const PlistValue &a, const PlistValue &b)
{
    if (a.kind() != b.kind())
        return false;
    switch (a.kind()) {
    case PlistValue::Kind::Boolean:
        return a.toBool() == b.toBool();
    case PlistValue::Kind::Number: {
        // NaN equals NaN here, so that a value always equals itself.
        const bool nanA = a.isReal() && std::isnan(a.toReal());
        const bool nanB = b.isReal() && std::isnan(b.toReal());
        return nanA || nanB ? nanA && nanB : compareNumbers(a, b) == 0;
    }
    case PlistValue::Kind::Date:
        return a.toDate() == b.toDate();
    case PlistValue::Kind::String:
        return QAnyStringView::equal(a.stringView(), b.stringView());
    case PlistValue::Kind::Data:
        return a.dataView() == b.dataView();
    case PlistValue::Kind::Uid:
        return a.toUid() == b.toUid();
    case PlistValue::Kind::Null:
    case PlistValue::Kind::None:
        return true;
    case PlistValue::Kind::Array:
    case PlistValue::Kind::Dictionary:
        break;
    }
    return a.isSameObject(b);
}

bool leavesIdentical(const PlistValue &a, const PlistValue &b)
{
    if (!leavesEqual(a, b))
        return false;
    if (a.isNumber())
        return numberClass(a) == numberClass(b) &&
               (!a.isReal() ||
                std::bit_cast<quint64>(a.toReal()) == std::bit_cast<quint64>(b.toReal()));
    if (a.kind() == PlistValue::Kind::Date)
        return std::bit_cast<quint64>(a.toDate()) == std::bit_cast<quint64>(b.toDate());
    return true;
}

// Walks two values side by side on an explicit stack. `ordered` compares
// dictionaries entry by entry in order; otherwise by key lookup.
bool deepEqual(const PlistValue &a, const PlistValue &b, bool identical)
{
    struct Pair
    {
        PlistValue a, b;
    };
    std::vector<Pair> stack{{a, b}};
    while (!stack.empty()) {
        const Pair pair = std::move(stack.back());
        stack.pop_back();
        const PlistValue &x = pair.a;
        const PlistValue &y = pair.b;
        if (x.kind() != y.kind())
            return false;
        if (x.isArray()) {
            const PlistArray ax = x.toArray(), ay = y.toArray();
            if (ax.count() != ay.count())
                return false;
            for (qsizetype i = 0; i < ax.count(); ++i)
                stack.push_back({ax.at(i), ay.at(i)});
        } else if (x.isDictionary()) {
            const PlistDictionary dx = x.toDictionary(), dy = y.toDictionary();
            if (dx.count() != dy.count())
                return false;
            for (qsizetype i = 0; i < dx.count(); ++i) {
                if (identical) {
                    if (!leavesEqual(dx.keyValueAt(i), dy.keyValueAt(i)))
                        return false;
                    stack.push_back({dx.valueAt(i), dy.valueAt(i)});
                    continue;
                }
                const qsizetype j = dy.indexOf(dx.keyValueAt(i).stringView());
                if (j < 0)
                    return false;
                stack.push_back({dx.valueAt(i), dy.valueAt(j)});
            }
        } else if (identical ? !leavesIdentical(x, y) : !leavesEqual(x, y)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool PlistValue::isEqualToPlist(const PlistValue &other) const
{
    return deepEqual(*this, other, false);
}

bool PlistValue::isIdenticalTo(const PlistValue &other) const
{
    return deepEqual(*this, other, true);
}

int PlistValue::compare(const PlistValue &other) const
{
    if (numberLike(*this) && numberLike(other))
        return compareNumbers(*this, other);
    if (kind() != other.kind())
        return 0;
    switch (kind()) {
    case Kind::String:
        return threeWay(QAnyStringView::compare(stringView(), other.stringView()), 0);
    case Kind::Date:
        return threeWay(toDate(), other.toDate());
    case Kind::Data:
        return compareData(dataView(), other.dataView());
    default:
        return 0;
    }
}

int PlistValue::plistCompare(const PlistValue &other) const
{
    if (kind() == Kind::Null)
        return other.kind() == Kind::Null ? 0 : 1;
    if (isString() && other.isString()) {
        const int c =
            QAnyStringView::compare(stringView(), other.stringView(), Qt::CaseInsensitive);
        return threeWay(c, 0);
    }
    return compare(other);
}
