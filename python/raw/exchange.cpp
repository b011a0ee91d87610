// Exchange of vertices with Python objects that stand for a host's collection and its accessor: any objects with the
// methods named here. Methods that a host may leave out are Release, BeginEdit and EndEdit.
#include <cstring>
#include <list>

#include "bind.h"

namespace korvale::raw {
namespace {

py::object& host_error()
{
    static auto* const type = new py::object; // outlives the interpreter
    return *type;
}

/// Calls Python and turns what it raises into a status: the one of a HostError, else a failure that is raised later.
template <class Work>
int32_t status_of(Work&& work)
{
    const py::gil_scoped_acquire lock;
    try {
        work();
        return 0;
    } catch (py::error_already_set& error) {
        if (error.matches(host_error())) {
            try {
                return static_cast<int32_t>(py::int_(error.value().attr("args")[py::int_(0)]).cast<int64_t>());
            } catch (...) {
                keep_raised();
                return kStatusFailed;
            }
        }
        keep_raised();
    } catch (...) {
        keep_raised();
    }
    return kStatusFailed;
}

void call_if_there(const py::object& object, const char* method)
{
    if (py::hasattr(object, method))
        object.attr(method)();
}

/// Hands on at most `number` triples and says how many there were.
uint32_t hand_over(const py::object& given, uint32_t number, double* triples)
{
    const auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(given);
    if (!array)
        throw py::error_already_set();
    const auto count = std::min<size_t>(static_cast<size_t>(array.size()) / 3, number);
    std::memcpy(triples, array.data(), count * 3 * sizeof(double));
    return static_cast<uint32_t>(array.size() / 3);
}

class Accessor final : public I3DVertexAccessor {
public:
    explicit Accessor(py::object python) : python_(std::move(python)) {}

    int32_t QueryInterface(const void*, void**) override { return kStatusNotImplemented; }
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override
    {
        status_of([this] { call_if_there(python_, "Release"); });
        return 0;
    }
    int32_t ReadPositions(uint32_t number, double* positions, uint32_t* number_read) override
    {
        return status_of([this, number, number_read, positions] {
            *number_read = hand_over(python_.attr("ReadPositions")(number), number, positions);
        });
    }
    int32_t WritePositions(uint32_t number, const double* positions, uint32_t* number_written) override
    {
        return status_of([=, this] {
            py::array_t<double> copy({static_cast<py::ssize_t>(number), py::ssize_t{3}}, positions);
            const py::object written = python_.attr("WritePositions")(number, copy);
            *number_written = written.is_none() ? number : written.cast<uint32_t>();
        });
    }
    int32_t Seek(uint32_t vertex) override
    {
        return status_of([=, this] { python_.attr("Seek")(vertex); });
    }
    int32_t ReadNormals(uint32_t number, double* normals, void*, uint32_t* number_read) override
    {
        return status_of([this, number, number_read, normals] {
            *number_read = hand_over(python_.attr("ReadNormals")(number), number, normals);
        });
    }
    int32_t BeginEdit() override
    {
        return status_of([this] { call_if_there(python_, "BeginEdit"); });
    }
    int32_t EndEdit() override
    {
        return status_of([this] { call_if_there(python_, "EndEdit"); });
    }

private:
    py::object python_;
};

class Collection final : public I3DVertexCollection {
public:
    explicit Collection(py::object python) : python_(std::move(python)) {}

    int32_t QueryInterface(const void*, void**) override { return kStatusNotImplemented; }
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override { return 0; }
    int32_t GetVertexCount(uint32_t* count) override
    {
        return status_of([=, this] { *count = python_.attr("GetVertexCount")().cast<uint32_t>(); });
    }
    int32_t GetAccessor(uint32_t zero, I3DVertexAccessor** accessor) override
    {
        return status_of([=, this] {
            py::object given = python_.attr("GetAccessor")(zero);
            *accessor = given.is_none() ? nullptr : &accessors_.emplace_back(std::move(given));
        });
    }

private:
    py::object python_;
    std::list<Accessor> accessors_; // those handed out live as long as the call
};

/// A host's collection, or None.
struct Host : Parameter<> {
    template <class C>
    using Given = const py::object&;
    struct Taken {
        Collection collection;
        bool is_none;
        I3DVertexCollection* handed() { return is_none ? nullptr : &collection; }
    };
    template <class C>
    Taken take(const Call&, const py::object& given) const
    {
        return {Collection(given), given.is_none()};
    }
};

/// An array that takes vertices. The library would release what hangs on it as well.
struct Taking : Record<> {
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        const auto taken = Record::take<C>(call, given);
        if constexpr (std::is_same_v<Object<C>, Tree>)
            given->part_company();
        return taken;
    }
};

/// An array whose elements are given to vertices.
struct Giving : Record<> {
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        const auto taken = Record::take<C>(call, given);
        const auto& record = *given->record;
        if (record.dvals != nullptr && record.count > 0 &&
            static_cast<size_t>(record.count) * 3 > given->room(DATA_TYPE_DOUBLE) / sizeof(double))
            call.refuse("array has fewer than three numbers for each of " + std::to_string(record.count) + " elements");
        return taken;
    }
};

} // namespace

void add_exchange(py::module_& m)
{
    host_error() = py::reinterpret_steal<py::object>(PyErr_NewExceptionWithDoc(
        "korvale.raw.HostError",
        "Raised by the methods of a collection or an accessor: HostError(status) makes status their result.", nullptr,
        nullptr));
    m.attr("HostError") = host_error();
    const Host collection{{"collection"}};
    const Taking taking{shape("array")};
    const Giving giving{read("array")};
    def_unlocked(m, NAMED(F3DKorvaleVertex2Data), collection, taking);
    def_unlocked(m, NAMED(F3DKorvaleVertex2DATA), collection, taking);
    def_unlocked(m, NAMED(F3DKorvaleNormal2Data), collection, taking);
    def_unlocked(m, NAMED(F3DKorvaleNormal2DATA), collection, taking);
    def_unlocked(m, NAMED(F3DKorvaleData2Vertex), giving, collection);
    def_unlocked(m, NAMED(F3DKorvaleDATA2Vertex), giving, collection);
    def_unlocked(m, NAMED(F3DKorvale2DataNormal), giving, collection);
    def_unlocked(m, NAMED(F3DKorvale2DATANormal), giving, collection);
}

} // namespace korvale::raw
