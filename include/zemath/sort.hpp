// zeMath: the sorter class (C++ only). CZSorter sorts positions first..last of an array
// of fixed-width keys with a comparison function (sort.h) and carries an optional
// companion array (typically an index vector) along, so that the companion ends in the
// keys' order. The algorithm is chosen at construction: method 0 a quicksort (CQSort,
// not stable), any other value a stable merge sort (CMergeSort).
#ifndef ZEMATH_SORT_HPP
#define ZEMATH_SORT_HPP

#include "sort.h"

// The algorithm object: the sort set-up (fields below) and, in its derived classes, the
// record sort. Not copyable; sorters share one through CZSorter's copy operations.
class ZEMATH_API CZSortBase {
  public:
    // All fields zeroed, then key width, count, companion count, companion, record width
    // (key width + companion width), keys and companion width set. A null keys pointer
    // sets the failed flag.
    CZSortBase(void* keys, int count, int key_width, void* companion, int companion_width,
               int companion_count);
    virtual ~CZSortBase();
    // Sorts records first..last of width bytes at records with compare; 1 on success, 0
    // when nothing could be done (records untouched).
    virtual int SortRecords(void* records, int first, int last, int width, void* compare) = 0;

    // Sorts key positions first..last (clamped to 0..count-1) and the companion elements
    // at the same positions. Returns 1 on success or when first == last, 0 when the
    // sorter has failed, the range lies outside 0..count-1, first > last, compare is
    // NULL, a width is not usable, or storage cannot be allocated (keys and companion
    // then untouched; a failed record-buffer allocation also sets the failed flag, after
    // which every Sort returns 0).
    // With a companion the keys and companion elements are copied into records (key,
    // then companion; only positions below the companion count read or write the
    // companion), sorted, and copied back; keys_fixed leaves the keys in their old order
    // and rearranges only the companion. Without a companion the keys are sorted in
    // place as records of key width + companion width bytes starting at key position
    // first (so a caller may sort an array of wider records whose key comes first, with
    // first = 0); keys_fixed has no effect then.
    int Sort(int first, int last, void* compare, bool keys_fixed);

    bool Failed() const { return failed_; }

    CZSortBase(const CZSortBase&) = delete;
    CZSortBase& operator=(const CZSortBase&) = delete;

  protected:
    bool buffer_owned_;    // a separate record buffer is allocated for the current sort
    bool failed_;          // null keys or a failed buffer allocation: nothing more is done
    int count_;            // number of key elements
    int companion_count_;  // number of companion elements (may be below count_)
    int companion_width_;  // bytes per companion element (0: none)
    int record_width_;     // key width + companion width
    int key_width_;        // bytes per key element
    void* keys_;
    void* companion_;
    void* work_;  // the records being sorted: the caller's keys or the buffer

  private:
    friend class CZSorter;
    int sharers_ = 1;  // sorters holding this object (see CZSorter's copy operations)
};

class ZEMATH_API CQSort : public CZSortBase {
  public:
    CQSort(void* keys, int count, int key_width, void* companion, int companion_width,
           int companion_count);
    ~CQSort() override;
    int SortRecords(void* records, int first, int last, int width, void* compare) override;
};

class ZEMATH_API CMergeSort : public CZSortBase {
  public:
    CMergeSort(void* keys, int count, int key_width, void* companion, int companion_width,
               int companion_count);
    ~CMergeSort() override;
    int SortRecords(void* records, int first, int last, int width, void* compare) override;
};

class ZEMATH_API CZSorter {
  public:
    // method 0: CQSort, any other value: CMergeSort, built with the other six arguments.
    // When the algorithm object cannot be allocated the sorter holds none and every Sort
    // returns 0.
    CZSorter(int method, void* keys, int count, int key_width, void* companion, int companion_width,
             int companion_count);
    ~CZSorter();

    // Copying copies the algorithm pointer only: the two sorters then share one algorithm
    // object (and so one set of keys), which hosts rely on. Kept deliberately. A share
    // count in the object makes the last sorter alone destroy it, so two sorters never
    // delete it twice; the target's previous object is released the same way. Sorters
    // sharing an object must not be used from different threads at once.
    CZSorter(const CZSorter& other);
    CZSorter& operator=(const CZSorter& other);

    // Sorts positions first..last; see CZSortBase::Sort. 1 on success, 0 otherwise.
    int Sort(int first, int last, void* compare, bool keys_fixed);

  private:
    void release();
    CZSortBase* algorithm_;
};

#endif  // ZEMATH_SORT_HPP
