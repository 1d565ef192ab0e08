// A machine with the sibling library and a number of installed products, each with a certificate of
// 40 fields.
#pragma once

#include <filesystem>

class ProductMachine {
  public:
    static constexpr int kFields = 40;

    // Signs the certificates and writes the registry below a folder. Throws on failure.
    ProductMachine(const std::filesystem::path& folder, int products);

    // For this process, before its first use of a machine, and for the children started from now
    // on.
    void Use() const;

    // Puts the stand-in for the online services in the place of the sibling library, and the
    // uninstall entries of product 7 into the registry.
    void AddServices() const;

    // The log of the calls on that stand-in.
    static std::filesystem::path ServiceLog(const std::filesystem::path& machine);

    // The next process has to import every certificate.
    void DropDatabase() const;

  private:
    std::filesystem::path folder_;
};
