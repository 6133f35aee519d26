#include "ktl/platform/array.h"

#include <functional>
#include <initializer_list>
#include <vector>

#include <gtest/gtest.h>

#include "ktl/platform/string.h"

namespace {

using Ints = CArray<int, int>;

Ints Of(std::initializer_list<int> values) {
    Ints array;
    for (const int value : values) array.Add(value);
    return array;
}

std::vector<int> Content(const Ints &array) {
    return {array.begin(), array.end()};
}

}  // namespace

TEST(Array, ABadIndexThrowsAndChangesNothing) {
    Ints array = Of({1, 2, 3});
    const std::function<void()> actions[] = {
        [&] { (void)array[3]; },
        [&] { (void)array.GetAt(-1); },
        [&] { array.SetAt(3, 0); },
        [&] { (void)array.ElementAt(99); },
        [&] { array.SetSize(-1); },
        [&] { array.SetAtGrow(-1, 0); },
        [&] { array.InsertAt(-1, 0); },
        [&] { array.RemoveAt(2, 2); },
        [&] { array.RemoveAt(1, 0x7FFFFFFF); },
        [&] { array.RemoveAt(-1); },
        [&] { array.Append(array); },
        [&] { array.Copy(array); },
    };
    for (const auto &action : actions) EXPECT_THROW(action(), CInvalidArgException);
    EXPECT_EQ(Content(array), (std::vector<int>{1, 2, 3}));
}

TEST(Array, GapsHoldZeros) {
    Ints array;
    EXPECT_EQ(array.GetUpperBound(), -1);
    EXPECT_EQ(array.GetData(), nullptr);
    array.SetAtGrow(2, 7);
    array.InsertAt(4, 9, 2);
    EXPECT_EQ(Content(array), (std::vector<int>{0, 0, 7, 0, 9, 9}));
    array.SetSize(1);
    array.SetSize(3);
    EXPECT_EQ(Content(array), (std::vector<int>{0, 0, 0}));
}

TEST(Array, ElementsMoveAside) {
    Ints array = Of({1, 2, 3});
    array.InsertAt(1, 8);
    array.RemoveAt(3);
    array.RemoveAt(3, 0);
    EXPECT_EQ(Content(array), (std::vector<int>{1, 8, 2}));
    EXPECT_EQ(array.Append(Of({5})), 3);
    EXPECT_EQ(array.Add(6), 4);
    array.Copy(Of({4}));
    EXPECT_EQ(Content(array), (std::vector<int>{4}));
}

TEST(Array, AnElementOfItsOwnIsSafeToPutIn) {
    CArray<CString> array;
    array.Add("a text longer than a short one");
    for (int i = 0; i < 20; ++i) array.Add(array[0]);
    array.InsertAt(0, array[20], 30);
    array.SetAtGrow(200, array[0]);
    EXPECT_EQ(array[29], array[50]);
    EXPECT_EQ(array[200], array[0]);
}
