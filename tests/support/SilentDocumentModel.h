#pragma once

#include <libVideo/ColladaDom.h>

namespace testSupport {

/// Drops the document model's own remarks while it lives, and puts the handler of before back at its end.
class SilentDocumentModel : public daeErrorHandler {
public:
    SilentDocumentModel() : m_before(daeErrorHandler::get()) { daeErrorHandler::setErrorHandler(this); }
    ~SilentDocumentModel() override { daeErrorHandler::setErrorHandler(m_before); }
    SilentDocumentModel(const SilentDocumentModel&) = delete;
    SilentDocumentModel& operator=(const SilentDocumentModel&) = delete;

    void handleError(daeString /*text*/) override {}
    void handleWarning(daeString /*text*/) override {}

private:
    daeErrorHandler* m_before;
};

} // namespace testSupport
