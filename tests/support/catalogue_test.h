// Tests on the catalogue of this process.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "catalogue/manager/CCertificateMgr.h"
#include "platform/component_model.h"
#include "support/debug_output.h"
#include "support/installed_products.h"
#include "trace/UTrace.h"

inline Utf8String U(const std::string& text) {
    return NarrowToUtf8(text);
}

inline std::string N(const Utf8String& text) {
    return Utf8ToNarrow(text);
}

// One line a certificate: its path, a blank, and its GUID.
inline std::vector<std::string> Lines(const CertificateReferences& references) {
    std::vector<std::string> lines;
    for (const SharedHandle<CCertificateReference>& reference : references) {
        lines.push_back(N(reference->GetPath()) + " " + N(reference->GetGUID()));
    }
    return lines;
}

inline std::vector<std::string> Lines(CCertificateMgr& manager) {
    CertificateReferences references;
    return Lines(manager.GetCertificateList(&references));
}

inline std::ptrdiff_t CountOf(const std::string& part, const std::string& text) {
    std::ptrdiff_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

class CatalogueTest : public testing::Test {
  protected:
    CatalogueTest() {
        InstalledProducts::RegisterReader(BREVIK_TEST_READER_COMPONENT);
        UTrace::Initialize();
        UTrace::SetLevel(4);
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
    }
    ~CatalogueTest() override { CoUninitialize(); }

    // Brings a certificate into the database, as an earlier process would have.
    static void Import(const std::string& path) {
        EXPECT_EQ(CCertificateReference().Init(U(AsciiToLower(path)), {}, 0, 0), 1) << path;
    }

    DebugOutput output_;
};
