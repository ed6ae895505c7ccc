// The memory of a tree: it stays while anybody holds a record of it, goes back with the last pointer, and
// may be dropped by several threads at once.
#include "script/node_pool.h"

#include "parse_helpers.h"
#include "support/library_file.h"
#include "support/staged_main.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Regions and other large memory that is in use. What is small is Qt's own.
constexpr std::size_t largeSize = 4096;
std::atomic<int> largeInUse{0};

struct Header {
    std::size_t size;
    std::max_align_t alignment;
};

} // namespace

void *operator new(std::size_t size) {
    auto *const header = static_cast<Header *>(std::malloc(sizeof(Header) + size));
    if (header == nullptr)
        throw std::bad_alloc();
    header->size = size;
    if (size >= largeSize)
        ++largeInUse;
    return header + 1;
}

void operator delete(void *memory) noexcept {
    if (memory == nullptr)
        return;
    Header *const header = static_cast<Header *>(memory) - 1;
    if (header->size >= largeSize)
        --largeInUse;
    std::free(header);
}

void operator delete(void *memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace {

using Node = std::shared_ptr<ast::ExprNode>;

// Of a few regions.
std::vector<Node> manyNodes(int count) {
    ast::NodePool pool;
    std::vector<Node> nodes;
    for (int i = 0; i < count; ++i) {
        nodes.push_back(pool.make<ast::ExprNode>());
        nodes.back()->line = i;
        nodes.back()->identifierName = QString::number(i);
    }
    return nodes;
}

} // namespace

class NodePoolTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aNewNodeHasItsDefaults();
    void nodesOutliveThePool_data();
    void nodesOutliveThePool();
    void memoryGoesWithTheLastPointer();
    void anEmptyPoolTakesNothing();
    void oneNodeOfATreeKeepsItsMemory();
    void severalThreadsDropOneTree();
};

void NodePoolTest::initTestCase() {
    QVERIFY(support::loadScriptVocabulary());
}

void NodePoolTest::aNewNodeHasItsDefaults() {
    ast::NodePool pool;
    const Node node = pool.make<ast::ExprNode>();
    QCOMPARE(int(node->kind), int(ast::ExprKind::Raw));
    QCOMPARE(at(*node), QString("1:1"));
    QCOMPARE(node.use_count(), 1L);
    const std::shared_ptr<ast::Stmt> statement = pool.make<ast::VarDeclStmt>();
    QVERIFY(std::dynamic_pointer_cast<ast::VarDeclStmt>(statement));
}

// The largest count fills regions that come from the system itself.
void NodePoolTest::nodesOutliveThePool_data() {
    QTest::addColumn<int>("count");
    for (const int count : {1, 17, 18, 19, 1000, 60000})
        QTest::newRow(qPrintable(QString::number(count))) << count;
}

void NodePoolTest::nodesOutliveThePool() {
    QFETCH(int, count);
    const std::vector<Node> nodes = manyNodes(count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(nodes[std::size_t(i)]->line, i);
        QCOMPARE(nodes[std::size_t(i)]->identifierName, QString::number(i));
    }
}

void NodePoolTest::memoryGoesWithTheLastPointer() {
    const int before = largeInUse;
    std::vector<Node> nodes;
    nodes.reserve(200);
    const int withList = largeInUse;
    {
        ast::NodePool pool;
        for (int i = 0; i < 100; ++i)
            nodes.push_back(pool.make<ast::ExprNode>());
        QVERIFY(largeInUse > withList);
        // Records that die while the pool lives on.
        nodes.resize(1);
        for (int i = 0; i < 100; ++i)
            nodes.push_back(pool.make<ast::ExprNode>());
    }
    QVERIFY(largeInUse > withList);
    nodes.clear();
    QCOMPARE(int(largeInUse), withList);
    nodes.shrink_to_fit();
    QCOMPARE(int(largeInUse), before);
}

void NodePoolTest::anEmptyPoolTakesNothing() {
    const int before = largeInUse;
    const ast::NodePool pool;
    QCOMPARE(int(largeInUse), before);
}

void NodePoolTest::oneNodeOfATreeKeepsItsMemory() {
    (void)parseScript("a"); // what is made once
    const int before = largeInUse;
    Node kept;
    {
        const auto program =
            parseScript("a = b + c\n" + QString("d = e(f)\n").repeated(500)).program;
        kept = as<ast::AssignStmt>(program->statements[0]).value.root->left;
    }
    QCOMPARE(kept->identifierName, QString("b"));
    QCOMPARE(int(largeInUse), before + 1); // its region alone
    kept.reset();
    QCOMPARE(int(largeInUse), before);
}

void NodePoolTest::severalThreadsDropOneTree() {
    const int before = largeInUse;
    {
        std::vector<std::vector<Node>> shares(4);
        std::vector<Node> nodes = manyNodes(20000);
        for (std::size_t i = 0; i < nodes.size(); ++i)
            shares[i % shares.size()].push_back(std::move(nodes[i]));
        std::vector<std::unique_ptr<QThread>> threads;
        for (auto &share : shares) {
            threads.emplace_back(QThread::create([&share] { share.clear(); }));
            threads.back()->start();
        }
        for (const auto &thread : threads)
            QVERIFY(thread->wait(60000));
    }
    QCOMPARE(int(largeInUse), before);
}

QUORVANE_TEST_MAIN(QCoreApplication, NodePoolTest)
#include "node_pool_test.moc"
