/*
 * brevikconfig: what the applications of the suite share.
 *
 * Twelve functions that an application calls from C, C++ or any language with a C interface: items
 * of the installed products' certificates, the language to run in, small values in the web cookie
 * store, and update and profile requests.
 *
 * Text. "Narrow" text is NUL-terminated and in the system's code page (UTF-8 off Windows); "wide"
 * text is NUL-terminated UTF-16 in bvkc_wchar units. A null text argument counts as the empty text.
 *
 * Memory. A block that a function hands out belongs to the caller, who frees it with CoTaskMemFree.
 * When a function fails, its out arguments are as they were, unless it says otherwise. A null out
 * argument gives the function's failure result.
 *
 * Threads. Every function may be called on any thread at any time, also while the process ends. A
 * call runs to its end on the caller's thread, puts a cancellation of the thread off until then,
 * and leaves the thread's component-model state as it found it. A thread that can be cancelled
 * asynchronously must not call, nor must a process that was forked from one with several threads
 * before it has started another program.
 *
 * Errors. The result is the only report; no exception leaves a function. The reason of a failure is
 * written to the trace, which `brevikctl trace` shows.
 */
#ifndef BREVIKCONFIG_H
#define BREVIKCONFIG_H

/* clang-format off */

#include <stdint.h>

#if !defined(_WIN32) && !defined(__cplusplus)
#include <uchar.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One unit of UTF-16. */
#ifdef _WIN32
typedef wchar_t bvkc_wchar;
#else
typedef char16_t bvkc_wchar;
#endif

/* A Windows language identifier: the primary language in the low 10 bits, the sublanguage in the
 * high 6 bits; 1033 is American English. */
typedef uint16_t bvkc_langid;

/* A window of the caller: an HWND on Windows, null where there is none. Only the low 32 bits of a
 * window handle are significant, so one that travelled through a 32-bit integer is still good. */
typedef void* bvkc_window;

/* ---- Catalogue of the installed products ----
 *
 * A product declares itself by a certificate file. The first of these calls in a process gathers
 * the machine's certificates; from then on the process answers from memory, and does not see what
 * is installed or removed later. Where several certificates match, the first one answers: first
 * come those in the machine's catalogue, in its order, then those that only the registry names.
 *
 * When the catalogue cannot be opened, a call returns its failure result, and the next one tries
 * again.
 */

/*
 * Reads one item of the certificate with a given installer GUID.
 *
 *   InstallerGUID  narrow; the GUID as it stands in the registry or in the certificate, in the
 *                  same case.
 *   sIdentifier    narrow; the name of the item, such as "QDR_ProductName".
 *   value          receives a block with the item's narrow text and its NUL: the first value of an
 *                  item that has several, the empty text for an item that the certificate lacks.
 *   size           receives the size of that block in bytes, including the NUL.
 *
 * Returns 1 when there is such a certificate and `value` and `size` are set, else 0.
 */
uint8_t bvkc_CertificateItemValue(const char* InstallerGUID, const char* sIdentifier, void** value,
                                  uint32_t* size);

/*
 * Reads one item of the certificate of a product.
 *
 *   sProdName      narrow; one of the product's names, in any case of its ASCII letters.
 *   sIdentifier    narrow; the name of the item.
 *   value          receives a block, as in bvkc_CertificateItemValue.
 *   size           receives the size of that block in bytes, including the NUL.
 *
 * Returns 1 when there is such a certificate and `value` and `size` are set, else 0.
 */
uint8_t bvkc_CertificateItemValueByProdName(const char* sProdName, const char* sIdentifier,
                                            void** value, uint32_t* size);

/*
 * Lists the installer GUIDs of the products in the folder of the running program or, when there are
 * none, in the folder of the program that started it.
 *
 *   guids          receives a block with the GUIDs as narrow texts, one after the other, each with
 *                  its NUL, and one more NUL at the end. A product without a GUID counts, with the
 *                  empty text.
 *
 * Returns the number of GUIDs. When there are none, and also when the catalogue cannot be read,
 * the result is 0 and the block is a single NUL, which is to be freed all the same. Only when there
 * is no memory for the block is the result 0 and `guids` as it was: set *guids to null before the
 * call, and free it when it is not null afterwards.
 */
int32_t bvkc_GetLocalGUIDs(char** guids);

/* ---- Language ---- */

/*
 * Chooses the language to run in from those that the caller offers: the language in which the
 * suite was installed if it is offered, else the identifier 0 if it is offered, else American
 * English if it is offered, else the first. The installed language is that of the first certificate
 * of the catalogue that has one; when the catalogue cannot be opened, there is none. No language
 * setting of the user or the system takes part.
 *
 *   langIds        `count` language identifiers.
 *   count          their number.
 *   selected       receives the choice.
 *
 * Returns 0 when `selected` holds the language, 1 when no language was offered.
 */
int32_t bvkc_GetUserLanguage_Ids(const bvkc_langid* langIds, uint32_t count, bvkc_langid* selected);

/*
 * The same from three-letter codes such as "ENU" and "DEU", in upper or lower case.
 *
 *   codes          `count` narrow texts. An unknown code, or null, offers the identifier 0.
 *   count          their number.
 *   selected       receives the choice, as an identifier.
 *
 * Returns 0 when `selected` holds the language, 1 when no language was offered.
 */
int32_t bvkc_GetUserLanguage_Code(const char* const* codes, uint32_t count, bvkc_langid* selected);

/* ---- Values in the web cookie store ----
 *
 * A write is one step among all threads and processes of the user that use the library: none loses
 * a value that another one wrote. It changes no other cookie. A store that cannot be read gives
 * "-1" for every value and takes none.
 */

/*
 * Reads a value from the suite's own cookie, "qdr_cookie" of the suite's web domain.
 *
 *   key            wide; the name of the value.
 *   value          receives a block with the wide text: the value, or "-1" when there is none.
 *
 * Returns 1 when it failed and nothing was handed out. With any other result `value` is set: 0 on
 * success, else the HRESULT of a failure, with what had been read by then.
 */
int32_t bvkc_VCM_ReadOndrelCookieValue(const bvkc_wchar* key, bvkc_wchar** value);

/*
 * Writes a value into the suite's own cookie and moves the cookie's expiry 183 days ahead.
 *
 *   key            wide; not empty. '=', '&', ';' and control characters are refused.
 *   value          wide; not empty. '&', ';' and control characters are refused.
 *
 * Refused with 1 is also whatever else would not read back as it was written: half a surrogate pair
 * in a text, and a value that makes its cookie longer than 32,766 bytes.
 *
 * Returns 0 when the value is in the store. 1, or the HRESULT of a failure: nothing was stored.
 */
int32_t bvkc_VCM_WriteOndrelCookieValue(const bvkc_wchar* key, const bvkc_wchar* value);

/*
 * Reads a value from any cookie.
 *
 *   domain         wide; a host name without a scheme.
 *   cookie         wide; the name of the cookie.
 *   key            wide; the name of the value in it. A plain cookie `theme=dark` holds its value
 *                  under its own name.
 *   value          receives a block with the wide text: the value, or "-1" when there is none.
 *
 * Returns as bvkc_VCM_ReadOndrelCookieValue does.
 */
int32_t bvkc_VCM_ReadCookieValue(const bvkc_wchar* domain, const bvkc_wchar* cookie,
                                 const bvkc_wchar* key, bvkc_wchar** value);

/*
 * Writes a value into any cookie.
 *
 *   domain         wide; a host name without a scheme. '&', ';', blanks and control characters are
 *                  refused.
 *   cookie         wide; the name of the cookie, not empty. '=', '&', ';', control characters and a
 *                  blank at its beginning are refused. The value goes to the first cookie of the
 *                  domain, in byte order, whose name contains this one, or to a new one of this
 *                  name. Refused is a cookie that bears the name of an attribute, in any case:
 *                  domain, path, expires, max-age, secure, httponly, samesite, priority or
 *                  partitioned; and one that its web server has marked HttpOnly or secure.
 *   key, value     wide; as for bvkc_VCM_WriteOndrelCookieValue.
 *
 * Returns as bvkc_VCM_WriteOndrelCookieValue does.
 */
int32_t bvkc_VCM_WriteCookieValue(const bvkc_wchar* domain, const bvkc_wchar* cookie,
                                  const bvkc_wchar* key, const bvkc_wchar* value);

/* ---- Requests to the online services ----
 *
 * The services are in the library VelmarHTTPClient13.dll, which each call looks for until one finds
 * it: beside the host, beside the program that started it, in the system's search order, and in the
 * folder "Ondrel Shared\DllShared" of the common program files. A call waits as long as the service
 * takes. Text that is not valid in the narrow code page is passed on as it converts.
 */

/*
 * Has the update service update a product.
 *
 *   productIdentifier  narrow; one of the product's names, in any case of its ASCII letters.
 *   locale             narrow; a language code such as "DEU", in upper or lower case, or empty for
 *                      the language in which the suite runs. A code that is not known is passed on
 *                      as the language 0.
 *   bRunInBackground   not 0: without a window of its own.
 *
 * Returns
 *   0  the service has taken the request, or there is no service;
 *   2  there is no update information: no certificate has that name, its item QDR_UpdateManager is
 *      missing or 0, or no installation uses the product;
 *   3  there is no uninstall data, neither of the product nor of the installation that uses it;
 *   4  the service returned anything but S_OK.
 */
int32_t bvkc_Dispatch_InvokeUpdate(const char* productIdentifier, const char* locale,
                                   uint8_t bRunInBackground);

/*
 * Asks the update service whether an update or a message waits for a product.
 *
 *   productIdentifier  narrow; as in bvkc_Dispatch_InvokeUpdate.
 *   locale             narrow; as in bvkc_Dispatch_InvokeUpdate.
 *   connectToServer    not 0: the service may ask its server.
 *
 * Returns 1 when there is one, and also when there is no service to ask. Returns 0 when there is
 * none, when the service failed, and where bvkc_Dispatch_InvokeUpdate would return 2 or 3.
 */
uint8_t bvkc_Dispatch_IsUpdateOrMessageAvailable(const char* productIdentifier, const char* locale,
                                                 uint8_t connectToServer);

/*
 * Has a dialog of the online service fetch the profile identifier of a user. Returns when the
 * dialog has ended.
 *
 *   strKindletUID  narrow; the user.
 *   locale         narrow; a language code, which the dialog receives as it is, or empty for the
 *                  language in which the suite runs.
 *   hWnd           the window that owns the dialog, or null.
 *   strProfileID   receives a block with the narrow text of the profile identifier. It is set to
 *                  null first, also when the call fails, and stays null when the service gives no
 *                  text. Free it whenever it is not null, whatever the result.
 *
 * Returns 0 when the service returned S_OK and `strProfileID` is set, 1 when the service returned
 * S_FALSE, 2 in every other case.
 */
int32_t bvkc_Dispatch_GetKindletProfileID(const char* strKindletUID, const char* locale,
                                          bvkc_window hWnd, char** strProfileID);

/* ---- Memory ---- */

/*
 * Frees a block that a function handed out; null is legal. On Windows it is the system's function.
 * Elsewhere libbrevikplatform exports it as brevik_CoTaskMemFree; a host that has a CoTaskMemFree
 * of its own defines BREVIKCONFIG_NO_COTASKMEMFREE before it includes this header, and calls
 * brevik_CoTaskMemFree.
 */
#ifdef _WIN32
__declspec(dllimport) void __stdcall CoTaskMemFree(void* block);
#else
void brevik_CoTaskMemFree(void* block);
#ifndef BREVIKCONFIG_NO_COTASKMEMFREE
static inline void CoTaskMemFree(void* block) {
    brevik_CoTaskMemFree(block);
}
#endif
#endif

#ifdef __cplusplus
}
#endif

#endif
