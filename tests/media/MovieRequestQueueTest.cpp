#include "media/MovieRequestQueue.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace Tessaron;

namespace
{

class SilentReceiver final : public KRMovieInfoReceiver
{
public:
    void KRMovieInfoDidGetInfo(const QVariantMap & /*info*/) override { }
};

class MovieRequests : public testing::Test
{
protected:
    using Receivers = std::vector<std::shared_ptr<KRMovieInfoReceiver>>;

    void append(const char *path, const Receivers &receivers)
    {
        MovieRequest request;
        request.path = QString::fromUtf8(path);
        for (const auto &receiver : receivers)
            request.receivers.push_back(receiver);
        queue.append(std::move(request));
    }
    [[nodiscard]] std::string paths() const
    {
        std::string all;
        for (std::size_t index = 0; index < queue.size(); ++index)
            all += queue[index].path.toStdString();
        return all;
    }

    const std::shared_ptr<KRMovieInfoReceiver> one = std::make_shared<SilentReceiver>();
    const std::shared_ptr<KRMovieInfoReceiver> other = std::make_shared<SilentReceiver>();
    MovieRequestQueue queue;
};

} // namespace

TEST_F(MovieRequests, index_isThatOfTheFirstWithThePath)
{
    append("a", {one});
    append("b", {one});
    append("b", {other});
    EXPECT_EQ(queue.indexOfItemWithPath(QStringLiteral("b")), 1);
    EXPECT_EQ(queue.indexOfItemWithPath(QStringLiteral("c")), -1);
}

TEST_F(MovieRequests, withdrawal_removesTheRequestOfItsOnlyReceiver)
{
    append("a", {other});
    append("b", {one});
    queue.withdraw(one.get());
    EXPECT_EQ(paths(), "a");
    queue.withdraw(one.get());
    EXPECT_EQ(paths(), "a") << "what is not there stays away without a word";
}

TEST_F(MovieRequests, withdrawal_raisesAndStops_whenRequestsFollowTheChangedOne)
{
    append("a", {one});
    append("b", {one});
    append("c", {one});
    EXPECT_THROW(queue.withdraw(one.get()), std::logic_error);
    EXPECT_EQ(paths(), "bc");
    EXPECT_THROW(queue.withdraw(one.get()), std::logic_error);
    queue.withdraw(one.get());
    EXPECT_TRUE(queue.isEmpty());
}

TEST_F(MovieRequests, withdrawal_removesARequestWithoutReceivers)
{
    MovieRequest bare;
    bare.path = QStringLiteral("a");
    bare.hasReceivers = false;
    queue.append(bare);
    append("b", {other});
    EXPECT_THROW(queue.withdraw(one.get()), std::logic_error);
    EXPECT_EQ(paths(), "b");
}

TEST_F(MovieRequests, withdrawal_leavesAnEmptyListOfReceiversAlone)
{
    append("a", {});
    queue.withdraw(one.get());
    EXPECT_EQ(paths(), "a");
}

TEST_F(MovieRequests, withdrawal_putsTheShortenedRequestWhereTheReceiverStoodInItsList)
{
    append("a", {other});
    append("b", {other, one});
    queue.withdraw(one.get());
    ASSERT_EQ(paths(), "ab");
    EXPECT_EQ(queue[1].receivers.size(), 1u) << "its own place, by chance";
    append("c", {one, other});
    queue.withdraw(one.get());
    ASSERT_EQ(paths(), "cbc") << "the first request is replaced, its own one stays";
    EXPECT_EQ(queue[0].receivers.size(), 1u);
    EXPECT_EQ(queue[2].receivers.size(), 2u);
}

TEST_F(MovieRequests, withdrawal_raises_whenTheQueueHasNoSuchPlace)
{
    append("a", {other, one});
    EXPECT_THROW(queue.withdraw(one.get()), std::out_of_range);
    EXPECT_EQ(queue[0].receivers.size(), 2u);
}

TEST_F(MovieRequests, dictionary_hasThePathAndTheReceivers)
{
    append("a", {one});
    const QVariantMap dictionary = queue[0].dictionary();
    EXPECT_EQ(dictionary.keys(), QStringList({QStringLiteral("del"), QStringLiteral("path")}));
    const QVariantList receivers = dictionary.value(QStringLiteral("del")).toList();
    ASSERT_EQ(receivers.size(), 1);
    EXPECT_EQ(receivers[0].value<KRMovieInfo::Receiver>().lock(), one);
}
