#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "metadata/engine/ContentStep.h"
#include "metadata/engine/IndexedContents.h"
#include "metadata/engine/IndexedFiles.h"
#include "metadata/engine/TermStep.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"
#include "metadata/query/TimeValue.h"
#include "metadata/query/ValueTest.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// Makes steps of terms. What a column of the segment can tell is told by it, with the bounds of
/// the query's own test; any other term is put to each row as a query of its own.
class TermCompiler {
 public:
  /// What was found in contents, by the query's own term and the attribute that was asked of: it is
  /// the same for all segments.
  using Finds = std::map<std::pair<const query::Term*, std::string>, SharedFind>;

  /// Borrows everything, for the life of the steps too. `files` and `contents` know the first row
  /// of the segment as `firstRow`. Without `contents`, which may be nullptr, no file has any.
  TermCompiler(const SegmentColumns& segment, std::size_t firstRow, const TypeTables& tables,
               const std::vector<ContentTypeId>& types, const query::AttributeSchema& schema,
               const query::EvaluationContext& context, const IndexedFiles& files,
               const IndexedContents* contents, Finds& finds)
      : segment_(segment),
        firstRow_(firstRow),
        tables_(tables),
        types_(types),
        schema_(schema),
        context_(context),
        files_(files),
        contents_(contents),
        finds_(finds) {}

  /// `!=` is made as `==`.
  std::unique_ptr<TermStep> stepOf(const query::Term& term) const;

 private:
  using Step = std::unique_ptr<TermStep>;

  Step contentStep(const query::Term& term, std::string_view attribute,
                   ContentStep::Find find) const;
  /// A term about an attribute that stands in files.
  Step attributeStep(const query::Term& term, const std::string& name, query::ValueTest test) const;
  /// A term about an attribute that a file may tell itself; of the other files `otherwise` tells.
  Step fileFirstStep(const query::Term& term, const std::string& name, query::ValueTest test,
                     Step otherwise) const;
  /// A comparison of text content alone.
  Step textStep(const query::Term& term, const query::Comparison& comparison) const;
  /// `*` or `**`.
  Step anywhereStep(const query::Term& term, const query::Comparison& comparison) const;
  Step askingStep(query::Term term) const;
  Step fastStepOf(LiveAttribute attribute, const query::Term& term,
                  const query::ValueTest& test) const;
  Step nameStep(const query::Term& term, const query::ValueTest& test) const;
  Step typeStep(LiveAttribute attribute, const query::ValueTest& test) const;
  Step classStep(LiveAttribute attribute, const query::ValueTest& test) const;
  Step dateStep(LiveAttribute attribute, const query::ValueTest& test) const;
  Step sizeStep(LiveAttribute attribute, const query::ValueTest& test) const;
  Step everyRow() const;
  Step noRow() const;

  const SegmentColumns& segment_;
  std::size_t firstRow_;
  const TypeTables tables_;
  const std::vector<ContentTypeId>& types_;
  const query::AttributeSchema& schema_;
  const query::EvaluationContext& context_;
  const IndexedFiles& files_;
  const IndexedContents* contents_;
  Finds& finds_;
};

}  // namespace vt
