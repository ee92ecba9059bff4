#include "DocumentFolder.h"

#include "support/CrashReport.h"
#include "support/FailingAllocator.h"
#include "support/Rows.h"
#include "support/SilentDocumentModel.h"
#include "support/SilentLog.h"

#include <libVideo/SceneGraph.h>

#include <vesk/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>

#if !defined(__SANITIZE_ADDRESS__) && defined(__has_feature)
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
extern "C" void __lsan_disable(); // not every compiler has the header
extern "C" void __lsan_enable();
#endif

// Loads an open document while one memory request fails: each request in turn.

namespace {

using documents::StoredDocument;
using namespace testSupport;

constexpr long mostFailures = 1500; // per document; evenly spread if there are more requests
constexpr long mostWholeFailures = 60;

class FailingLoadTest : public testing::TestWithParam<StoredDocument> {
protected:
    void SetUp() override;
    // Loads once. @return whether a request failed
    bool loadWithFailure(long successes, long& requests);

private:
    const SilentDocumentModel m_silence;
    const SilentLog m_log;
    DAE m_dae{nullptr, nullptr, "1.4.1"};
    domCOLLADA* m_root = nullptr;
    domVisual_scene* m_visualScene = nullptr;
};

TEST_P(FailingLoadTest, EachFailureThrowsAndLeavesNothingBehind)
{
    CrashReport report(60);
    report.begin("a load without failure of " + GetParam().path);
    long requests = 0;
    ASSERT_FALSE(loadWithFailure(-1, requests)) << "also makes the loggers";
    ASSERT_FALSE(loadWithFailure(-1, requests));
    ASSERT_GT(requests, 3);
    const long failures = std::min(requests, mostFailures);
    for (long i = 0; i < failures; ++i) {
        const long request = i * requests / failures;
        report.begin("request " + std::to_string(request) + " fails, of " + GetParam().path);
        long ignored = 0;
        EXPECT_TRUE(loadWithFailure(request, ignored)) << "request " << request;
    }
    RecordProperty("requests", std::to_string(requests));
    long again = 0;
    EXPECT_FALSE(loadWithFailure(-1, again));
    EXPECT_EQ(again, requests) << "a load after the failed ones is like the one before";
}

// The pool and the scene of one load.
struct Loaded {
    libVideo::SceneResources resources;
    libVideo::VisualScene scene;

    void load(DAE& dae, const domCOLLADA& root, const domVisual_scene& visualScene)
    {
        libVideo::createAnimationListFromCollada(&root, dae, resources.animationList);
        libVideo::createCameraListFromCollada(&root, dae, resources.cameraList);
        libVideo::createPointLightListFromCollada(&root, resources.pointLightList);
        libVideo::createSpotLightListFromCollada(&root, dae, resources.spotLightList);
        static_cast<void>(scene.createFromCollada(visualScene, libVideo::SceneResourcesLink(&resources)));
    }
};

// Resolves references within the open document, without messages. The document model's own resolver prints messages
// through a stream, which hides failed requests.
class LocalResolver : public daeURIResolver {
public:
    explicit LocalResolver(DAE& owner) : daeURIResolver(owner) {}
    daeElement* resolveElement(const daeURI& reference) override
    {
        daeDocument* const document = reference.getReferencedDocument();
        return document != nullptr ? dae->getDatabase()->idLookup(reference.fragment(), document) : nullptr;
    }
    daeString getName() override { return "local"; }
};

void FailingLoadTest::SetUp()
{
    daeTArray<daeURIResolver*>& resolvers = m_dae.getURIResolvers().list(); // owns its entries
    for (std::size_t i = 0; i < resolvers.getCount(); ++i) {
        delete resolvers[i];
    }
    resolvers.clear();
    resolvers.append(new LocalResolver(m_dae));
    m_root = daeSafeCast<domCOLLADA>(m_dae.open(GetParam().path));
    ASSERT_NE(nullptr, m_root);
    ASSERT_NE(nullptr, m_root->getScene());
    m_visualScene = daeSafeCast<domVisual_scene>(m_root->getScene()->getInstance_visual_scene()->getUrl().getElement());
    ASSERT_NE(nullptr, m_visualScene);
}

bool FailingLoadTest::loadWithFailure(long successes, long& requests)
{
    const auto loaded = std::make_unique<Loaded>();
    const FailingAllocator allocator(successes);
    bool hasThrown = false;
    try {
        loaded->load(m_dae, *m_root, *m_visualScene);
    } catch (const vesk::NullPointer&) {
        hasThrown = true;
    } catch (const std::bad_alloc&) {
        hasThrown = true;
    } catch (const vesk::Exception&) {
        hasThrown = allocator.hasFailed(); // an exception caused by the document, which needs no memory
    }
    requests = allocator.requests();
    EXPECT_EQ(hasThrown, allocator.hasFailed()) << "request " << successes;
    return allocator.hasFailed();
}

// While an object exists, allocations may leak.
class LeaksAllowed {
public:
#ifdef __SANITIZE_ADDRESS__
    LeaksAllowed()
    {
        __lsan_disable();
    }
    ~LeaksAllowed()
    {
        __lsan_enable();
    }
#else
    LeaksAllowed() {}
    ~LeaksAllowed() {}
#endif
    LeaksAllowed(const LeaksAllowed&) = delete;
    LeaksAllowed& operator=(const LeaksAllowed&) = delete;
};

// Includes the opening. The document model leaks when it runs out of memory, and then reports that the document cannot
// be read.
TEST_P(FailingLoadTest, AWholeLoadWithAFailureThrowsOrIsRefused)
{
    const LeaksAllowed leaks;
    CrashReport report(60);
    const vesk::String path(GetParam().path.c_str());
    long requests = 0;
    const auto loadWhole = [&](long successes) {
        libVideo::Scene scene;
        const FailingAllocator allocator(successes);
        try {
            static_cast<void>(scene.createFromCollada(path));
        } catch (const vesk::Exception&) {
            EXPECT_FALSE(scene.visualScene().root().children().size() == 0 && !allocator.hasFailed());
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(allocator.hasFailed());
        }
        requests = allocator.requests();
    };
    loadWhole(-1); // creates the loggers
    loadWhole(-1);
    const long all = requests;
    ASSERT_GT(all, 100) << "the opening alone";
    const long failures = std::min(all, mostWholeFailures);
    for (long i = 0; i < failures; ++i) {
        const long request = i * all / failures;
        report.begin("request " + std::to_string(request) + " of all fails, of " + GetParam().path);
        loadWhole(request);
        EXPECT_GT(requests, request);
    }
    loadWhole(-1);
    EXPECT_EQ(all, requests) << "a load after the failed ones is like the one before";
}

INSTANTIATE_TEST_SUITE_P(Documents, FailingLoadTest, testing::ValuesIn(documents::ownDocuments()), rowName);

} // namespace
