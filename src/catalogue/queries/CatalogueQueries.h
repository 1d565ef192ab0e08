// The catalogue's answers to the library's callers. Arguments are those of brevikconfig.h; texts
// and out arguments are not null here.
//
// Blocks come from CoTaskMemAlloc and belong to the caller. Without anything to hand out, or
// without memory, the out arguments are as they were. Any thread. What a load of the catalogue
// throws passes.
#pragma once

#include <cstdint>
#include <string>

namespace CatalogueQueries {

// The first value of an item of the first certificate with this GUID, byte for byte, as narrow text
// with its NUL; `size` receives its bytes. A certificate without the item gives the empty text.
// False without such a certificate, or when there is no memory for the block.
bool CertificateItemValue(const std::string& installerGuid, const std::string& identifier,
                          void** value, std::uint32_t* size);

// The same for the first certificate of a product name, without regard to the case of ASCII
// letters.
bool CertificateItemValueByProdName(const std::string& productName, const std::string& identifier,
                                    void** value, std::uint32_t* size);

// The GUIDs of the products beside the host program, or else beside its parent's: narrow texts with
// their NULs one after the other, and one further NUL; that alone where there are none, and when
// the call throws. Returns their number, 0 as well when there is no memory for the block.
std::int32_t GetLocalGUIDs(char** guids);

}  // namespace CatalogueQueries
