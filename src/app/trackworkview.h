#pragma once
// The strip's view of the disruption module: statuses, records and the panel text as
// the display asks for them.

#include "disruptions/disruptions.h"
#include "display/seams.h"

namespace quendle {

class DisruptionsTrackworkView : public TrackworkView {
public:
    explicit DisruptionsTrackworkView(const Disruptions& d) : d_(d) {}

    std::vector<int> gettrakstatusfrthisservray(int leg, int serv) const override
    {
        return d_.gettrakstatusfrthisservray(leg, serv);
    }
    int gettrakstatusfrthisserv(int leg, int serv) const override { return d_.gettrakstatusfrthisserv(leg, serv); }
    int gettrakstatusfrthisservwthupcom(int leg, int serv) const override
    {
        return d_.gettrakstatusfrthisservwthupcom(leg, serv);
    }
    int trakstatusforthisservint(int connection) const override { return d_.trakstatusforthisservint(connection); }
    int relevantcount() const override { return static_cast<int>(d_.relevanttrakinfo.size()); }
    TrakRecord relevanttrakinfo(int i) const override { return record(d_.relevanttrakinfo, i); }
    int trakwcount() const override { return static_cast<int>(d_.trakw.size()); }
    TrakRecord trakw(int i) const override { return record(d_.trakw, i); }
    QString gettrakwforviewindex() const override { return d_.gettrakwforviewindex(); }

private:
    static TrakRecord record(const std::vector<TrakwRecord>& list, int i)
    {
        if (i < 0 || i >= static_cast<int>(list.size()))
            return {};
        const TrakwRecord& r = list[i];
        TrakRecord out{r.line, r.trakbegin, r.trakend, r.originfostr, {}, r.gotstnsoutinfo};
        for (const StationRange& s : r.stnsoutfix)
            out.stnsoutfix.push_back({s.trakbegstr, s.trakendstr});
        return out;
    }

    const Disruptions& d_;
};

} // namespace quendle
