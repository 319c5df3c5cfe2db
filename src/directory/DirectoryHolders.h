#pragma once

#include <memory>
#include <utility>

#include "platform/DirectoryServices.h"

namespace vt {

/// Gives back to the directory what it handed out by address.
template <class T, DirStatus (DirectoryServices::*Release)(DirReference, T*)>
struct DirectoryDeleter {
  DirectoryServices* services = nullptr;
  DirReference session = 0;

  void operator()(T* thing) const { (services->*Release)(session, thing); }
};

template <class T, DirStatus (DirectoryServices::*Release)(DirReference, T*)>
using DirectoryPointer = std::unique_ptr<T, DirectoryDeleter<T, Release>>;

using DataBufferHolder = DirectoryPointer<DataBuffer, &DirectoryServices::dsDataBufferDeAllocate>;
using DataNodeHolder = DirectoryPointer<DataNode, &DirectoryServices::dsDataNodeDeAllocate>;
using RecordEntryHolder = DirectoryPointer<RecordEntry, &DirectoryServices::dsDeallocRecordEntry>;
using AttributeEntryHolder =
    DirectoryPointer<AttributeEntry, &DirectoryServices::dsDeallocAttributeEntry>;
using ValueEntryHolder =
    DirectoryPointer<AttributeValueEntry, &DirectoryServices::dsDeallocAttributeValueEntry>;

/// A list whose storage the directory made: gives back its contents, then frees the storage.
class DataListHolder {
 public:
  DataListHolder(DirectoryServices& services, DirReference session,
                 std::unique_ptr<DataList> list = nullptr)
      : services_(services), session_(session), list_(std::move(list)) {}
  DataListHolder(const DataListHolder&) = delete;
  DataListHolder& operator=(const DataListHolder&) = delete;
  ~DataListHolder() {
    if (list_) services_.dsDataListDeallocate(session_, list_.get());
  }

  explicit operator bool() const { return list_ != nullptr; }
  const DataList* get() const { return list_.get(); }
  /// Where a call stores the list that it makes.
  std::unique_ptr<DataList>* out() { return &list_; }

 private:
  DirectoryServices& services_;
  DirReference session_;
  std::unique_ptr<DataList> list_;
};

/// A list in our own storage, filled from texts.
class FilledDataList {
 public:
  FilledDataList(DirectoryServices& services, DirReference session,
                 std::span<const char* const> texts)
      : services_(services),
        session_(session),
        filled_(services.dsBuildListFromStringsAlloc(session, &list_, texts) == kDSNoErr) {}
  FilledDataList(const FilledDataList&) = delete;
  FilledDataList& operator=(const FilledDataList&) = delete;
  ~FilledDataList() {
    if (filled_) services_.dsDataListDeallocate(session_, &list_);
  }

  /// Whether the directory could build it.
  explicit operator bool() const { return filled_; }
  const DataList* get() const { return &list_; }

 private:
  DirectoryServices& services_;
  DirReference session_;
  DataList list_;
  bool filled_;
};

/// Gives back, by `Release`, what the directory handed out by number; 0 is nothing.
template <DirStatus (DirectoryServices::*Release)(std::uint32_t)>
class ReferenceHolder {
 public:
  explicit ReferenceHolder(DirectoryServices& services) : services_(services) {}
  ReferenceHolder(const ReferenceHolder&) = delete;
  ReferenceHolder& operator=(const ReferenceHolder&) = delete;
  ~ReferenceHolder() { reset(); }

  void reset() {
    if (reference_ != 0) (services_.*Release)(std::exchange(reference_, 0));
  }
  std::uint32_t get() const { return reference_; }
  std::uint32_t* out() { return &reference_; }

 private:
  DirectoryServices& services_;
  std::uint32_t reference_ = 0;
};

using NodeHolder = ReferenceHolder<&DirectoryServices::dsCloseDirNode>;
using AttributeListHolder = ReferenceHolder<&DirectoryServices::dsCloseAttributeList>;
using ValueListHolder = ReferenceHolder<&DirectoryServices::dsCloseAttributeValueList>;

/// Continuation data; released with the session that it came from.
class ContinueDataHolder {
 public:
  ContinueDataHolder(DirectoryServices& services, DirReference session)
      : services_(services), session_(session) {}
  ContinueDataHolder(const ContinueDataHolder&) = delete;
  ContinueDataHolder& operator=(const ContinueDataHolder&) = delete;
  ~ContinueDataHolder() {
    if (data_ != 0) services_.dsReleaseContinueData(session_, data_);
  }

  explicit operator bool() const { return data_ != 0; }
  DirContinueData* out() { return &data_; }

 private:
  DirectoryServices& services_;
  DirReference session_;
  DirContinueData data_ = 0;
};

}  // namespace vt
