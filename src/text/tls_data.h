// An array of `count` elements that each thread has for itself.
//
// A thread's elements are made, with the initial value, at its first use of the object, and live
// until the object ends. Any thread may use the object, and its own elements alone.
#pragma once

#include <new>
#include <stdexcept>
#include <type_traits>

#include "platform/errors.h"
#include "platform/threads.h"
#include "text/CriticalSection.h"
#include "text/SystemException.h"

template <typename T>
class tls_data : public VelmarCriticalSection {
    static_assert(std::is_trivially_destructible_v<T>, "blocks are freed without destructors");

  public:
    // Throws SystemException::Win32 when the platform has no slot left.
    tls_data(unsigned count, T initial) : index_(TlsAlloc()), count_(count), initial_(initial) {
        if (index_ == TLS_OUT_OF_INDEXES) {
            throw SystemException::Win32(GetLastError());
        }
    }

    ~tls_data() override {
        TlsFree(index_);
        while (blocks_ != nullptr) {
            Block* next = blocks_->next;
            ::operator delete(blocks_);
            blocks_ = next;
        }
    }

    // This thread's element. Throws std::out_of_range for an index that is not less than the count,
    // std::bad_alloc or SystemException::Win32 when its elements cannot be made.
    T& operator[](unsigned index) {
        if (index >= count_) {
            throw std::out_of_range("tls_data::operator[index] - invalid index");
        }
        const VelmarAutoCriticalSection hold(this);
        auto* block = static_cast<Block*>(TlsGetValue(index_));
        if (block == nullptr) {
            block = AddBlock();
        }
        return Elements(block)[index];
    }

    operator T&() { return (*this)[0]; }

    tls_data& operator=(const T& value) {
        (*this)[0] = value;
        return *this;
    }

  private:
    // Precedes the elements of each thread.
    struct alignas(alignof(T) > alignof(void*) ? alignof(T) : alignof(void*)) Block {
        Block* next;
    };

    static T* Elements(Block* block) { return reinterpret_cast<T*>(block + 1); }

    Block* AddBlock() {
        void* memory = ::operator new(sizeof(Block) + count_ * sizeof(T));
        if (!TlsSetValue(index_, memory)) {
            const DWORD code = GetLastError();
            ::operator delete(memory);
            throw SystemException::Win32(code);
        }
        auto* block = new (memory) Block{blocks_};
        for (unsigned i = 0; i < count_; ++i) {
            new (Elements(block) + i) T(initial_);
        }
        blocks_ = block;
        return block;
    }

    DWORD index_;
    Block* blocks_ = nullptr;
    unsigned count_;
    T initial_;
};
