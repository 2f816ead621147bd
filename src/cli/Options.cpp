namespace orvane {}
