#pragma once
// The records a new back office starts with: a Portuguese restaurant company, its VAT classes,
// tenders, document types and series, warehouses, workstations, a supplier and units of sale.
namespace kitra::backoffice {

class BackOffice;

// Writes the starting data into a back office that has the schema and nothing else.
void WriteStartingData(BackOffice& backOffice);

}  // namespace kitra::backoffice
