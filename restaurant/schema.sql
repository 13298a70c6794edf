-- The restaurant database as the connector reads it: every table and column its statements
-- use, with the types that give the values the importers expect.
--
--   * Money (prices, line values, discounts, totals, tender and cash amounts) is kept in
--     hundredths of a euro as whole numbers: 250 is 2,50 EUR.
--   * Quantities are whole numbers: units, or thousandths (grams) for items read from a scale
--     (properties.ReadQuantityFromScale = 1): 1500 is 1,5 kg.
--   * Tax rates are decimals: 23.00, 13.00, 6.00.
--   * Codes that the connector parses as text (families.code, subfamilies.code, plus.ItemID,
--     paymenttypes.code, customers.GlobalDiscount, DocumentID) are texts.
--   * Texts that the restaurant system may leave empty are NULL-able; a document or movement
--     that belongs to no document has DocumentID '' (never NULL).
--   * Master data carries RecordDeleted (0 live, 1 deleted) and ModifyDate, which the connector
--     compares with its last import date; documents and movements are selected by
--     transactionsheaders.ModifyDate and cashdrawer_movements.Date.
--   * Salesman uids are 10000 + SalesmanID; lines carry the salesman's uid, and the connector
--     turns a uid above 10000 back into the salesman's code.
--   * A receipt is a cash drawer movement of type 8 or 9 with a DocumentID; the tenders of the
--     credit-sale headers it settles point at it through transactionstenders.ReceiptMovementuid.
--
-- The statements name some tables in mixed case (subFamilies, PaymentTypes): the server runs
-- with lower_case_table_names=1, so every name here is lower case.
--
-- Loading this file into an empty database creates the tables, empty.

SET NAMES utf8mb4;

CREATE TABLE salesmans (
  uid               INT          NOT NULL AUTO_INCREMENT,
  SalesmanID        INT          NOT NULL,
  SalesmanName      VARCHAR(60)  NULL,
  SalesmanPassword  VARCHAR(20)  NULL,
  Telephone         VARCHAR(20)  NULL,
  MobilePhone       VARCHAR(20)  NULL,
  AddressLine1      VARCHAR(100) NULL,
  AddressLine2      VARCHAR(100) NULL,
  PostalCode        VARCHAR(20)  NULL,
  EmailAddress      VARCHAR(100) NULL,
  Locality          VARCHAR(60)  NULL,
  RecordDeleted     TINYINT      NOT NULL DEFAULT 0,
  CreateDate        DATETIME     NULL DEFAULT CURRENT_TIMESTAMP,
  ModifyDate        DATETIME     NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (uid),
  KEY salesmans_SalesmanID (SalesmanID),
  KEY salesmans_ModifyDate (ModifyDate)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE customers (
  uid                INT          NOT NULL AUTO_INCREMENT,
  CustomerID         INT          NOT NULL,
  Name               VARCHAR(100) NULL,
  GlobalDiscount     VARCHAR(10)  NULL,          -- a percentage as text: NULL, '', '0', '12.5'
  CardID             VARCHAR(30)  NULL,
  FederalTaxID       VARCHAR(20)  NULL,          -- the NIF
  EmailAddress       VARCHAR(100) NULL,
  PartyAddressLine1  VARCHAR(100) NULL,
  PartyAddressLine2  VARCHAR(100) NULL,
  PartyPostalCode    VARCHAR(20)  NULL,
  PartyCountryID     VARCHAR(3)   NULL,
  PartyLocationID    VARCHAR(60)  NULL,          -- the locality, as text
  Telephone1         VARCHAR(20)  NULL,
  MobileTelephone1   VARCHAR(20)  NULL,
  RecordDeleted      TINYINT      NOT NULL DEFAULT 0,
  CreateDate         DATETIME     NULL DEFAULT CURRENT_TIMESTAMP,
  ModifyDate         DATETIME     NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (uid),
  KEY customers_CustomerID (CustomerID),
  KEY customers_ModifyDate (ModifyDate)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE families (
  uid            INT         NOT NULL AUTO_INCREMENT,
  code           VARCHAR(10) NOT NULL,
  description    VARCHAR(60) NULL,
  RecordDeleted  TINYINT     NOT NULL DEFAULT 0,
  CreateDate     DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  ModifyDate     DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (uid),
  KEY families_ModifyDate (ModifyDate)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE subfamilies (
  uid            INT         NOT NULL AUTO_INCREMENT,
  code           VARCHAR(10) NOT NULL,
  FamilyUID      INT         NOT NULL,           -- families.uid
  Description    VARCHAR(60) NULL,
  RecordDeleted  TINYINT     NOT NULL DEFAULT 0,
  CreateDate     DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  ModifyDate     DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (uid),
  KEY subfamilies_FamilyUID (FamilyUID),
  KEY subfamilies_ModifyDate (ModifyDate)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE taxes (
  uid          INT          NOT NULL AUTO_INCREMENT,
  TaxRate      DECIMAL(5,2) NOT NULL,            -- percent: 23.00, 13.00, 6.00
  Description  VARCHAR(40)  NULL,
  PRIMARY KEY (uid)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

-- An item's sale properties: its five prices (hundredths, tax included), its taxes (eat in,
-- take away) and whether its quantity is read from a scale.
CREATE TABLE properties (
  UID                    INT     NOT NULL AUTO_INCREMENT,
  ReadQuantityFromScale  TINYINT NOT NULL DEFAULT 0,
  SalesPrice1            INT     NOT NULL DEFAULT 0,
  SalesPrice2            INT     NOT NULL DEFAULT 0,
  SalesPrice3            INT     NOT NULL DEFAULT 0,
  SalesPrice4            INT     NOT NULL DEFAULT 0,
  SalesPrice5            INT     NOT NULL DEFAULT 0,
  ItemTaxID1             INT     NOT NULL,       -- taxes.uid
  ItemTaxID2             INT     NULL,           -- taxes.uid
  PRIMARY KEY (UID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

-- The sale items (PLUs).
CREATE TABLE plus (
  UID                INT         NOT NULL AUTO_INCREMENT,
  ItemID             VARCHAR(20) NOT NULL,
  Description        VARCHAR(60) NULL,
  ShortDescription1  VARCHAR(30) NULL,
  BarCode            VARCHAR(30) NULL,
  SubFamilyID        INT         NOT NULL,       -- subfamilies.uid
  PropertyUID        INT         NOT NULL,       -- properties.UID
  StockManagement    TINYINT     NOT NULL DEFAULT 0,
  RecordDeleted      TINYINT     NOT NULL DEFAULT 0,
  CreateDate         DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  ModifyDate         DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (UID),
  KEY plus_ItemID (ItemID),
  KEY plus_ModifyDate (ModifyDate)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE paymenttypes (
  uid            INT         NOT NULL AUTO_INCREMENT,
  code           VARCHAR(10) NOT NULL,           -- '9999' on account, '9998' offered
  Description    VARCHAR(40) NULL,
  RecordDeleted  TINYINT     NOT NULL DEFAULT 0,
  PRIMARY KEY (uid)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

-- Closed transactions. DocumentTypeUID 17 invoice, 11 credit sale (on the customer's account),
-- 13 stock document; other types exist and are not imported. TransactionStatus 'N' is a normal
-- transaction, anything else a refund.
CREATE TABLE transactionsheaders (
  UID                          INT         NOT NULL AUTO_INCREMENT,
  DocumentTypeUID              INT         NOT NULL,
  DocumentID                   VARCHAR(20) NOT NULL DEFAULT '',
  CreateSalesmanUID            INT         NULL,        -- salesmans.uid
  CustomerUID                  INT         NULL,        -- customers.uid
  TransactionStatus            VARCHAR(1)  NOT NULL DEFAULT 'N',
  TransactionStartTerminalUID  INT         NULL,
  TableTotal                   INT         NOT NULL DEFAULT 0,
  CreateDate                   DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  ModifyDate                   DATETIME    NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (UID),
  KEY transactionsheaders_ModifyDate (ModifyDate),
  KEY transactionsheaders_DocumentID (DocumentID),
  KEY transactionsheaders_CustomerUID (CustomerUID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE transactionsdetails (
  UID                 INT          NOT NULL AUTO_INCREMENT,
  TransactionUID      INT          NOT NULL,      -- transactionsheaders.UID
  PluUid              INT          NOT NULL,      -- plus.UID
  PluName             VARCHAR(60)  NOT NULL DEFAULT '',
  Quantity            INT          NOT NULL DEFAULT 1,
  PluUnitPrice        INT          NOT NULL DEFAULT 0,
  DiscountPercentage  DECIMAL(5,2) NOT NULL DEFAULT 0,
  DiscountValue       INT          NOT NULL DEFAULT 0,
  SaleValue           INT          NOT NULL DEFAULT 0,
  SaleTaxUID          INT          NOT NULL,      -- taxes.uid
  SalesmanUID         INT          NULL,          -- salesmans.uid
  Waste               TINYINT      NOT NULL DEFAULT 0,
  CreateDate          DATETIME     NULL DEFAULT CURRENT_TIMESTAMP,
  PRIMARY KEY (UID),
  KEY transactionsdetails_TransactionUID (TransactionUID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE transactionstenders (
  UID                 INT         NOT NULL AUTO_INCREMENT,
  TransactionUID      INT         NOT NULL,       -- transactionsheaders.UID
  PaymentTypeUID      INT         NOT NULL,       -- paymenttypes.uid
  PaymentType         VARCHAR(40) NULL,           -- the payment type's name when paid
  value               INT         NOT NULL DEFAULT 0,
  ReceiptMovementuid  INT         NULL,           -- cashdrawer_movements.UID of the receipt
  PRIMARY KEY (UID),
  KEY transactionstenders_TransactionUID (TransactionUID),
  KEY transactionstenders_ReceiptMovementuid (ReceiptMovementuid)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE cashdrawermovementtypes (
  uid          INT         NOT NULL,
  description  VARCHAR(40) NOT NULL,
  PRIMARY KEY (uid)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

-- Cash drawer movements. MovementFlow 1 money in, 0 money out, 2 neither (counted as in).
-- DocumentID is '' for movements of their own, the sale's number for the cash of a sale and
-- the receipt's number for receipts (types 8 and 9).
CREATE TABLE cashdrawer_movements (
  UID             INT          NOT NULL AUTO_INCREMENT,
  MovementTypeID  INT          NOT NULL,          -- cashdrawermovementtypes.uid
  MovementFlow    INT          NOT NULL DEFAULT 1,
  SalesmanUID     INT          NOT NULL,          -- salesmans.uid
  EntityUID       INT          NULL,              -- customers.uid
  Date            DATETIME     NOT NULL,
  value           INT          NOT NULL DEFAULT 0,
  DocumentID      VARCHAR(20)  NOT NULL DEFAULT '',
  description     VARCHAR(100) NULL,
  PRIMARY KEY (UID),
  KEY cashdrawer_movements_Date (Date),
  KEY cashdrawer_movements_DocumentID (DocumentID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

-- The movement types are part of the restaurant system itself.
INSERT INTO cashdrawermovementtypes (uid, description) VALUES
  (1, 'Fundo Maneio'),
  (2, 'Fundo Maneio Prox'),
  (3, 'Sangria'),
  (4, 'Compra Direta'),
  (5, 'Vale'),
  (6, 'Empréstimo'),
  (7, 'Devolução'),
  (8, 'Pag.Conta Corrente'),
  (9, 'Recibo'),
  (10, 'Venda');
